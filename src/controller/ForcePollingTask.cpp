#include "controller/ForcePollingTask.h"

#include "controller/ZephanRSMSingleTon.h"
#include "logging/FollowedLines.h"
#include "platform/agent/Logging.h"
#include "platform/agent/ServiceAgent.h"
#include "platform/agent/Threads.h"
#include "platform/portable/EchoWithoutWait.h"
#include "platform/portable/Guard.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace {

constexpr unsigned int kDelayedStartCheckInterval = 5000;  // milliseconds

unsigned int millisecondsOf(std::int32_t seconds) noexcept {
    const std::int64_t milliseconds = std::int64_t{seconds} * 1000;
    return static_cast<unsigned int>(
        std::clamp<std::int64_t>(milliseconds, 0, std::numeric_limits<unsigned int>::max()));
}

}  // namespace

int ForcePollingTask::DataPollingTask(void* argument) {
    const platform::EchoWithoutWait echo(platform::EchoWithoutWait::Kind::PollingThread);
    const PollingThread::Number number = PollingThread::enter();
    return platform::guarded(1, [&] {
        ForcePollingTask task(number, static_cast<KRX::ServiceAgentNS::ServiceAgent*>(argument));
        if (argument == nullptr) {
            KRXLog(level::kError, "DataPollingTask(): Invalid Ext Handle");
            task.leaves([](const RsmState& /*state*/) { return true; });
            return 1;
        }
        if (task.rsm() == nullptr) {
            KRXLog(level::kError,
                   "Failed to get RSMSingleton pointer in convertDelayedToNormal(mode). Returning... \n");
            return 1;
        }
        const auto runs = [&task] {
            task.run();
            return true;
        };
        while (!platform::guarded(false, runs)) {
            if (task.breaksOff()) {
                return 1;
            }
        }
        return 0;
    });
}

std::shared_ptr<SharedRsm> ForcePollingTask::rsm() const {
    const auto controller = ZephanRSMSingleTon::existing();
    return controller != nullptr && controller->rsm()->thread().has(number_) ? controller->rsm() : nullptr;
}

template <typename Use>
bool ForcePollingTask::look(Use&& use) const {
    const auto rsm = this->rsm();
    return rsm != nullptr && rsm->lookAs(number_, use);
}

template <typename IsDone>
bool ForcePollingTask::leaves(IsDone&& isDone) const {
    const auto rsm = this->rsm();
    return rsm == nullptr || rsm->leaveWhen(number_, isDone);
}

void ForcePollingTask::run() {
    KRX::ServiceAgentNS::VirtualAsset* asset = serviceAgent_->GetAsset(0);
    for (bool there = report(); there;) {
        there = waitForDelayedStart();
        if (there && asset == nullptr) {
            asset = serviceAgent_->GetAsset(0);  // a device may be registered while a schedule waits
        }
        there = there && pollUntilOver(asset) && report() &&
                !leaves([](const RsmState& state) { return state.isDone(); });
    }
}

bool ForcePollingTask::breaksOff() {
    return !look([](RsmState& state, std::int64_t now) {
        if (!state.restartRequested) {
            state.breakOff(now);
        }
    }) || !report() ||
           leaves([](RsmState& state) { return !std::exchange(state.restartRequested, false); });
}

bool ForcePollingTask::waitForDelayedStart() {
    for (bool slept = false;; slept = true) {
        bool waiting = false;
        bool started = false;
        if (!look([&](RsmState& state, std::int64_t now) {
                waiting = state.isWaiting();
                // Also beside an order that came in during the wait: the profile that is due goes before it.
                started = (waiting || slept) && state.startWhenDue(now);
                if (started || !waiting) {
                    state.beginPolling();
                }
            })) {
            return false;
        }
        if (started || !waiting) {
            return !started || report();
        }
        if (!reportWhatIsLeft()) {
            return false;
        }
        KRXThreadSleep(kDelayedStartCheckInterval);
    }
}

bool ForcePollingTask::pollUntilOver(KRX::ServiceAgentNS::VirtualAsset* asset) {
    for (;;) {
        bool over = false;
        if (!look([&](RsmState& state, std::int64_t now) {
                over = state.endWhenOver(asset != nullptr, now);
            })) {
            return false;
        }
        if (over || !reportWhatIsLeft() || !pollOnce(*asset)) {
            return over;
        }
    }
}

bool ForcePollingTask::pollOnce(KRX::ServiceAgentNS::VirtualAsset& asset) {
    std::int32_t rate = 0;
    if (!apply(&RsmState::restartOrFirstPass) ||
        !look([&](const RsmState& state, std::int64_t /*now*/) { rate = state.pollingRate; })) {
        return false;
    }
    KRXThreadSleep(millisecondsOf(rate));
    if (rsm() == nullptr) {
        return false;
    }
    KRXLog(level::kForce, lines::kPoll);
    // Looked at again: the line may have taken its time, and the asset may be gone.
    if (const auto rsm = this->rsm()) {
        rsm->profile().introduce(asset);
    } else {
        return false;
    }
    // When the agent has no memory for this poll, say, it counts, and the next one comes.
    platform::attempt([&] { asset.ForcePoll(); });
    return std::all_of(std::begin(RsmState::kAfterPoll), std::end(RsmState::kAfterPoll),
                       [this](RsmState::Step step) { return apply(step); });
}

bool ForcePollingTask::apply(RsmState::Step step) {
    RsmState::Effects effects;
    if (!look([&](RsmState& state, std::int64_t now) { effects = (state.*step)(now); }) ||
        (effects.report && !report())) {
        return false;
    }
    if (!effects.save) {
        return true;
    }
    records::StateFile::Notice notice;
    {
        const auto controller = ZephanRSMSingleTon::existing();
        if (controller == nullptr || !controller->rsm()->thread().has(number_)) {
            return false;
        }
        notice = controller->saveRSMState();
    }
    if (notice.format != nullptr) {
        KRXLog(level::kForce, notice.format, notice.path.c_str(), notice.path.c_str(), notice.suffix.data());
    }
    return true;
}

bool ForcePollingTask::report() {
    if (const auto rsm = this->rsm()) {
        rsm->report(number_);
    }
    return rsm() != nullptr;
}

bool ForcePollingTask::reportWhatIsLeft() {
    const auto rsm = this->rsm();
    return rsm != nullptr && (!rsm->isReportLeft() || report());
}
