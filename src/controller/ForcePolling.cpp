// The polling thread: how it is created and what it does from its start to its end.
#include "controller/ModuleGate.h"
#include "controller/ZephanRSMSingleTon.h"
#include "platform/agent/Logging.h"
#include "platform/agent/ServiceAgent.h"
#include "platform/agent/Threads.h"

#include <algorithm>
#include <limits>
#include <new>

namespace {

constexpr unsigned int kDelayedStartCheckInterval = 5000;  // milliseconds
constexpr unsigned int kLeavingThreadTimeout = 3000;       // milliseconds
constexpr unsigned int kThreadStackSize = 4096;

unsigned int millisecondsOf(std::int32_t seconds) noexcept {
    const std::int64_t milliseconds = std::int64_t{seconds} * 1000;
    return static_cast<unsigned int>(
        std::clamp<std::int64_t>(milliseconds, 0, std::numeric_limits<unsigned int>::max()));
}

/// Sleeps outside the module gate. The thread may be dropped here, so no frame above may own anything.
void sleepOutsideGate(unsigned int milliseconds) noexcept {
    gate::Pass::leave();
    KRXThreadSleep(milliseconds);
    gate::Pass::enter();
}

}  // namespace

std::int8_t ZephanRSMSingleTon::createThread() noexcept {
    switch (threadMutex_.wait()) {
        case platform::Mutex::Wait::Abandoned:
            KRXLog(50, "\n The thread got ownership of an abandoned logging mutex.");
            return -1;
        case platform::Mutex::Wait::Busy:
        case platform::Mutex::Wait::Failed:
            return -1;
        case platform::Mutex::Wait::Obtained:
            break;
    }
    releaseFinishedThreadLocked();  // it may have ended since the caller looked
    std::int8_t result = 0;
    if (pollingThread_ == nullptr) {
        result = generateThread();
    } else {
        KRXLog(50, "\n createThread --- Thread was already created.");
        UpdateProperty();
    }
    if (!threadMutex_.release()) {
        KRXLog(250, "\n error while releasing logging mutex.");
    }
    return result;
}

std::int8_t ZephanRSMSingleTon::generateThread() noexcept {
    if (closing_) {
        return -1;
    }
    const int priority = KRXThreadGetPriority(KRXThreadGetHandleSelf());
    auto* const thread = new (std::nothrow) KRXThread;
    if (thread == nullptr) {
        KRXLog(250, "new Failed in  generateThread of ZephanRSMSingleTon. \n");
        return -1;
    }
    if (KRXThreadConstruct(thread) != 0) {
        delete thread;
        return -1;
    }
    {
        const std::lock_guard lock(stateLock_);
        pollingThreadLeaves_ = false;
    }
    pollingThread_ = thread;
    if (KRXThreadStart(thread, "Data Polling", priority, 0, kThreadStackSize, &DataPollingTask,
                       serviceAgent_.load()) != 0) {
        KRXLog(250, "\n generateThread --- Failed to start Force Polling thread.");
        KRXThreadDestroy(thread);
        pollingThread_ = nullptr;
        delete thread;
        return -1;
    }
    return 0;
}

void ZephanRSMSingleTon::releaseFinishedThread() noexcept {
    if (threadMutex_.wait() == platform::Mutex::Wait::Obtained) {
        releaseFinishedThreadLocked();
        threadMutex_.release();
    }
}

void ZephanRSMSingleTon::releaseFinishedThreadLocked() noexcept {
    KRXThread* const thread = pollingThread_;
    if (thread == nullptr) {
        return;
    }
    if (isLeaving()) {
        // Past its last look at the state: it would miss what the caller is about to set.
        KRXWaitForThread(thread, nullptr, kLeavingThreadTimeout);
    }
    if (KRXThreadIsActive(thread) == 0) {
        KRXThreadDestroy(thread);
        pollingThread_ = nullptr;
        delete thread;
    }
}

bool ZephanRSMSingleTon::isLeaving() {
    const std::lock_guard lock(stateLock_);
    return pollingThreadLeaves_;
}

int ZephanRSMSingleTon::DataPollingTask(void* argument) noexcept {
    gate::Pass::enter();
    ZephanRSMSingleTon* const controller = getInstance();
    int result = 1;
    if (argument == nullptr) {
        KRXLog(50, "DataPollingTask(): Invalid Ext Handle");
    } else if (controller == nullptr) {
        KRXLog(50, "Failed to get RSMSingleton pointer in convertDelayedToNormal(mode). Returning... \n");
    } else {
        result = controller->pollUntilOver(*static_cast<KRX::ServiceAgentNS::ServiceAgent*>(argument));
    }
    gate::Pass::leave();
    return result;
}

int ZephanRSMSingleTon::pollUntilOver(KRX::ServiceAgentNS::ServiceAgent& serviceAgent) {
    KRX::ServiceAgentNS::VirtualAsset* asset = serviceAgent.GetAsset(0);
    UpdateProperty();
    for (;;) {
        waitForDelayedStart();
        if (asset == nullptr) {
            asset = serviceAgent.GetAsset(0);  // a device may be registered while a schedule waits
        }
        std::uint32_t pollCount = 0;
        while (!isOver(pollCount, asset != nullptr)) {
            pollOnce(pollCount, *asset);
        }
        UpdateProperty();
        const std::lock_guard lock(stateLock_);
        if (!state_.delayedProfilePending && !state_.restartRequested) {
            pollingThreadLeaves_ = true;
            return 0;
        }
    }
}

void ZephanRSMSingleTon::waitForDelayedStart() {
    for (;;) {
        State current = state();
        if (!current.delayedProfilePending || current.rsmMode != rsm::kNotActive) {
            return;
        }
        while (current.secondsUntilDelayedStart() > 0 && current.gracePeriod == 0.0) {
            sleepOutsideGate(kDelayedStartCheckInterval);
            current = state();
        }
        bool started = false;
        {
            const std::lock_guard lock(stateLock_);
            started = state_.startWhenDue();
        }
        if (started) {
            UpdateProperty();
        }
    }
}

bool ZephanRSMSingleTon::isOver(std::uint32_t& pollCount, bool canPoll) {
    const std::lock_guard lock(stateLock_);
    return state_.endWhenOver(pollCount, canPoll);
}

void ZephanRSMSingleTon::pollOnce(std::uint32_t& pollCount, KRX::ServiceAgentNS::VirtualAsset& asset) {
    apply(&State::restartOrFirstPass, pollCount);
    sleepOutsideGate(millisecondsOf(state().pollingRate));
    KRXLog(250, "\nZephan Agent is Force Polling  ...");
    asset.ForcePoll();
    apply(&State::takeUpActivity, pollCount);
    apply(&State::endActivity, pollCount);
    apply(&State::holdForActivity, pollCount);
    apply(&State::markLastPoll, pollCount);
    apply(&State::takeOverDueProfile, pollCount);
    apply(&State::takeOverDueProfileAfterActivity, pollCount);
    ++pollCount;
}

void ZephanRSMSingleTon::apply(State::Effects (State::*step)(std::uint32_t&) noexcept,
                               std::uint32_t& pollCount) {
    State::Effects effects;
    {
        const std::lock_guard lock(stateLock_);
        effects = (state_.*step)(pollCount);
    }
    if (effects.report) {
        UpdateProperty();
    }
    if (effects.save) {
        saveRSMState();
    }
}

void ZephanRSMSingleTon::convertDelayedToNormal() {
    ZephanRSMSingleTon* const controller = getInstance();
    if (controller == nullptr) {
        KRXLog(50, "Failed to get RSMSingleton pointer in convertDelayedToNormal. Returning... \n");
        return;
    }
    const std::lock_guard lock(controller->stateLock_);
    controller->state_.convertDelayed();
}

void ZephanRSMSingleTon::convertDelayedToNormal(std::int32_t mode) {
    ZephanRSMSingleTon* const controller = getInstance();
    if (controller == nullptr) {
        KRXLog(50, "Failed to get RSMSingleton pointer in convertDelayedToNormal(mode). Returning... \n");
        return;
    }
    const std::lock_guard lock(controller->stateLock_);
    controller->state_.convertDelayed(mode);
}
