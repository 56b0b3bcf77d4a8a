// What the rest of the system orders of the controller: start, end and schedule RSM, and remote activity.
#include "controller/ForcePollingTask.h"
#include "controller/ZephanRSMSingleTon.h"
#include "platform/agent/Logging.h"
#include "platform/agent/Registration.h"
#include "platform/agent/ServiceAgent.h"

#include <limits>

std::int8_t ZephanRSMSingleTon::createThread() {
    return thread_.createThread(&ForcePollingTask::DataPollingTask, getServiceAgent(),
                                [this] { UpdateProperty(); });
}

std::int8_t ZephanRSMSingleTon::ForcePoll(std::int32_t minutes, std::int32_t pollingRateSeconds,
                                          std::uint32_t& currentPollInterval) {
    thread_.releaseFinished();
    currentPollInterval = std::numeric_limits<std::uint32_t>::max();
    if (auto* const asset = profile_->findAsset()) {
        currentPollInterval = asset->GetAssetProfile().GetCurrentPollInterval();
    }
    changeState(
        [&](RsmState& state, std::int64_t now) { state.forcePoll(minutes, pollingRateSeconds, now); });
    KRXLog(level::kWarn, " Web Service Extension is going to force poll.\n");
    KRXLog(level::kWarn, " Polling Rate = %d seconds \n", pollingRateSeconds);
    KRXLog(level::kWarn, " Polling Duration = %d min \n", minutes);
    KRXLog(level::kForce, "\n ZephanServices....ForcePoll called");
    const std::int8_t result = createThread();
    KRXLog(level::kForce, "\nZephanServices....Thread started 1");
    return result;
}

std::int8_t ZephanRSMSingleTon::Disconnect(const char* /*memberName*/,
                                           KRX::Messaging::SerializableString& result) {
    const auto answer = [&result](const char* line, const char* text) {
        result.SetValue(text);
        KRXLog(level::kWarn, "%s", line);
    };
    if (!thread_.isHeld()) {
        answer("Disconnect : There is no active thread. ", "There is no active thread.");
        return 0;
    }
    switch (changeState([](RsmState& state, std::int64_t now) { return state.disconnect(now); })) {
        case rsm::kNotActive:
            answer("Disconnect : Agent is not in force poll mode. \n", "Agent is not in force poll mode.");
            break;
        case rsm::kForcePollActivity:
            answer("Disconnect : Can not disconnect as agent is in activity mode. \n",
                   "Agent is in activity mode.");
            break;
        case rsm::kForcePollGrace:
            answer("Disconnect : Going to exit force polling after next poll. \n",
                   "Thread exited successfully.");
            break;
        default:
            break;
    }
    return 0;
}

std::int8_t ZephanRSMSingleTon::scheduleDelayedProfile(std::int32_t pollingRateSeconds, std::int64_t start,
                                                       std::int64_t end, std::int32_t activityGraceMinutes) {
    thread_.releaseFinished();
    KRXLog(level::kWarn, "\n SCHEDULING RSM FOR %s", scheduling::calendarText(start).data());
    // Asked under the same lock as the thread's last look, so a thread that leaves is never counted on.
    const bool threadSeesIt = changeState([&](RsmState& state, std::int64_t /*now*/) {
        state.scheduleDelayedProfile(pollingRateSeconds, start, end, activityGraceMinutes);
        return thread_.seesOrders();
    });
    if (!threadSeesIt) {
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

void ZephanRSMSingleTon::setRemoteActivity(bool active) {
    if (changeState(
            [&](RsmState& state, std::int64_t now) { return state.setRemoteActivity(active, now); })) {
        UpdateProperty();
    }
}
