#include "controller/ForcePollingTask.h"

#include "controller/ZephanRSMSingleTon.h"
#include "platform/EchoWithoutWait.h"
#include "platform/Guard.h"
#include "platform/agent/Logging.h"
#include "platform/agent/ServiceAgent.h"
#include "platform/agent/Threads.h"

#include <algorithm>
#include <limits>

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
    const PollingThread::Number number = PollingThread::enter(argument);
    const auto isTheirs = [number] {
        const auto controller = ZephanRSMSingleTon::existing();
        return controller != nullptr && controller->thread_.has(number);
    };
    // When memory runs out, say, the next order finds that the thread has ended.
    const int result = platform::guarded(1, [&] {
        if (argument == nullptr) {
            KRXLog(level::kError, "DataPollingTask(): Invalid Ext Handle");
            return 1;
        }
        if (!isTheirs()) {
            KRXLog(level::kError,
                   "Failed to get RSMSingleton pointer in convertDelayedToNormal(mode). Returning... \n");
            return 1;
        }
        ForcePollingTask(number, *static_cast<KRX::ServiceAgentNS::ServiceAgent*>(argument)).run();
        return 0;
    });
    if (const auto controller = ZephanRSMSingleTon::existing()) {
        controller->thread_.setEnded(number);
    }
    return result;
}

template <typename Use>
bool ForcePollingTask::look(Use&& use) {
    const auto controller = ZephanRSMSingleTon::existing();
    if (controller == nullptr || !controller->thread_.has(number_)) {
        return false;
    }
    use(*controller);
    return true;
}

template <typename Use>
bool ForcePollingTask::lookAtState(Use&& use) {
    return look([&](ZephanRSMSingleTon& controller) { controller.changeState(use); });
}

void ForcePollingTask::run() {
    KRX::ServiceAgentNS::VirtualAsset* asset = serviceAgent_.GetAsset(0);
    bool there = report();
    for (bool done = false; there && !done;) {
        there = waitForDelayedStart();
        if (there && asset == nullptr) {
            asset = serviceAgent_.GetAsset(0);  // a device may be registered while a schedule waits
        }
        // The decision to leave falls together with the last look: an order is either seen by it or sees it.
        there = there && pollUntilOver(asset) && report() && look([&](ZephanRSMSingleTon& controller) {
                    controller.changeState([&](const RsmState& state, std::int64_t /*now*/) {
                        done = state.isDone();
                        if (done) {
                            controller.thread_.setLeaving(number_);
                        }
                    });
                });
    }
}

bool ForcePollingTask::waitForDelayedStart() {
    for (;;) {
        bool waiting = false;
        bool due = false;
        if (!lookAtState([&](const RsmState& state, std::int64_t now) {
                waiting = state.isWaiting();
                due = state.isDelayedStartDue(now);
            })) {
            return false;
        }
        if (!waiting) {
            return true;
        }
        for (bool otherOrder = false; !due && !otherOrder;) {
            KRXThreadSleep(kDelayedStartCheckInterval);
            if (!lookAtState([&](const RsmState& state, std::int64_t now) {
                    due = state.isDelayedStartDue(now);
                    otherOrder = state.gracePeriod != 0.0;
                })) {
                return false;
            }
        }
        bool started = false;
        if (!lookAtState([&](RsmState& state, std::int64_t now) { started = state.startWhenDue(now); }) ||
            (started && !report())) {
            return false;
        }
    }
}

bool ForcePollingTask::pollUntilOver(KRX::ServiceAgentNS::VirtualAsset* asset) {
    if (!lookAtState([](RsmState& state, std::int64_t /*now*/) { state.beginPolling(); })) {
        return false;
    }
    for (;;) {
        bool over = false;
        if (!lookAtState([&](RsmState& state, std::int64_t now) {
                over = state.endWhenOver(asset != nullptr, now);
            })) {
            return false;
        }
        if (over) {
            return true;
        }
        if (!pollOnce(*asset)) {
            return false;
        }
    }
}

bool ForcePollingTask::pollOnce(KRX::ServiceAgentNS::VirtualAsset& asset) {
    std::int32_t rate = 0;
    if (!apply(&RsmState::restartOrFirstPass) ||
        !lookAtState([&](const RsmState& state, std::int64_t /*now*/) { rate = state.pollingRate; })) {
        return false;
    }
    KRXThreadSleep(millisecondsOf(rate));
    if (!look([](const ZephanRSMSingleTon& /*controller*/) {})) {
        return false;
    }
    KRXLog(level::kForce, "\nZephan Agent is Force Polling  ...");
    // Looked at again: the line may have taken its time, and the asset may be gone.
    std::shared_ptr<ProfileReport> profile;
    if (!look([&](const ZephanRSMSingleTon& controller) { profile = controller.profile_; })) {
        return false;
    }
    profile->introduce(asset);
    profile.reset();
    // When the agent has no memory for this poll, say, it counts, and the next one comes.
    platform::attempt([&] { asset.ForcePoll(); });
    return std::all_of(std::begin(RsmState::kAfterPoll), std::end(RsmState::kAfterPoll),
                       [this](RsmState::Step step) { return apply(step); });
}

bool ForcePollingTask::apply(RsmState::Step step) {
    RsmState::Effects effects;
    if (!lookAtState([&](RsmState& state, std::int64_t now) { effects = (state.*step)(now); })) {
        return false;
    }
    if (effects.report && !report()) {
        return false;
    }
    if (!effects.save) {
        return true;
    }
    const char* failure = nullptr;
    if (!look([&](ZephanRSMSingleTon& controller) { failure = controller.saveRSMState(); })) {
        return false;
    }
    if (failure != nullptr) {
        KRXLog(level::kForce, "%s", failure);
    }
    return true;
}

bool ForcePollingTask::report() {
    bool again = true;
    for (int sent = 0; again && sent < ZephanRSMSingleTon::kMostReports; ++sent) {
        ZephanRSMSingleTon::Report report;
        if (!look([&](ZephanRSMSingleTon& controller) { report = controller.beginReport(); })) {
            return false;
        }
        report.profile->send(report.state);
        if (!look([&](ZephanRSMSingleTon& controller) { again = controller.isOutdated(report); })) {
            return false;
        }
    }
    return true;
}
