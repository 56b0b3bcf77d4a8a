// What the rest of the system orders of the controller: start, end and schedule RSM, and remote activity.
#include "controller/ForcePollingTask.h"
#include "controller/ZephanRSMSingleTon.h"
#include "logging/FollowedLines.h"
#include "platform/agent/Logging.h"
#include "platform/agent/Registration.h"
#include "platform/agent/ServiceAgent.h"

#include <limits>

std::int8_t ZephanRSMSingleTon::createThread() {
    using Creation = PollingThread::Creation;
    const Creation creation =
        rsm_->thread().createThread(&ForcePollingTask::DataPollingTask, getServiceAgent());
    if (creation == Creation::AlreadyThere) {
        UpdateProperty();
    }
    return creation == Creation::AlreadyThere || creation == Creation::Started ? 0 : -1;
}

void ZephanRSMSingleTon::take(const RsmOrder& order) {
    rsm_->look([&](RsmState& state, std::int64_t now) {
        if (order.start == 0) {
            state.forcePoll(order.minutes, order.pollingRate, now);
        } else {
            state.scheduleDelayedProfile(order.pollingRate, order.start, order.end, order.minutes);
        }
    });
}

std::int8_t ZephanRSMSingleTon::carryOut(const RsmOrder& order) {
    PollingThread& thread = rsm_->thread();
    if (order.start != 0) {
        KRXLog(level::kWarn, lines::kScheduling, records::calendarText(order.start).data());
        thread.releaseFinished();
        if (!thread.seesOrders()) {
            const std::int8_t result = createThread();
            KRXLog(level::kForce, "\nZephanServices....Thread started 3");
            return result;
        }
        if (getServiceAgent() == nullptr) {
            return -1;
        }
        UpdateProperty();
        return 0;
    }
    KRXLog(level::kWarn, " Web Service Extension is going to force poll.\n");
    KRXLog(level::kWarn, lines::kPollingRate, order.pollingRate);
    KRXLog(level::kWarn, lines::kPollingDuration, order.minutes);
    KRXLog(level::kForce, "\n ZephanServices....ForcePoll called");
    const std::int8_t result = createThread();
    KRXLog(level::kForce, "\nZephanServices....Thread started 1");
    return result;
}

std::int8_t ZephanRSMSingleTon::ForcePoll(std::int32_t minutes, std::int32_t pollingRateSeconds,
                                          std::uint32_t& currentPollInterval) {
    const RsmOrder order{pollingRateSeconds, minutes};
    take(order);
    currentPollInterval = std::numeric_limits<std::uint32_t>::max();
    if (auto* const asset = rsm_->profile().findAsset()) {
        currentPollInterval = asset->GetAssetProfile().GetCurrentPollInterval();
    }
    return carryOut(order);
}

std::int8_t ZephanRSMSingleTon::scheduleDelayedProfile(std::int32_t pollingRateSeconds, std::int64_t start,
                                                       std::int64_t end, std::int32_t activityGraceMinutes) {
    const RsmOrder order{pollingRateSeconds, activityGraceMinutes, start, end};
    take(order);
    return carryOut(order);
}

std::int8_t ZephanRSMSingleTon::Disconnect(const char* /*memberName*/,
                                           KRX::Messaging::SerializableString& result) {
    // Without a thread, then by the mode that is found.
    static constexpr struct {
        const char* line;
        const char* text;
    } kOutcomes[] = {
        {"Disconnect : There is no active thread. ", "There is no active thread."},
        {"Disconnect : Agent is not in force poll mode. \n", "Agent is not in force poll mode."},
        {lines::kDisconnecting, "Thread exited successfully."},
        {"Disconnect : Can not disconnect as agent is in activity mode. \n", "Agent is in activity mode."},
    };
    const auto& outcome = kOutcomes[rsm_->look([&](RsmState& state, std::int64_t now) {
        return rsm_->thread().isHeld() ? 1 + state.disconnect(now) : 0;
    })];
    result.SetValue(outcome.text);
    KRXLog(level::kWarn, "%s", outcome.line);
    return 0;
}

void ZephanRSMSingleTon::setRemoteActivity(bool active) {
    if (rsm_->look([&](RsmState& state, std::int64_t now) { return state.setRemoteActivity(active, now); })) {
        UpdateProperty();
    }
}
