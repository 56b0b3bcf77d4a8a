// What the rest of the system asks of the controller: start, end, schedule and resume RSM, and remote
// activity.
#include "controller/ZephanRSMSingleTon.h"
#include "platform/Number.h"
#include "platform/agent/Logging.h"
#include "platform/agent/Registration.h"
#include "platform/agent/ServiceAgent.h"
#include "scheduling/GmtClock.h"

#include <algorithm>
#include <limits>

namespace {

constexpr std::int32_t kDefaultActivityGracePeriod = 30;  // minutes
constexpr std::int32_t kSecondsPerMinute = 60;

}  // namespace

std::int8_t ZephanRSMSingleTon::ForcePoll(std::int32_t minutes, std::int32_t pollingRateSeconds,
                                          std::uint32_t& currentPollInterval) {
    releaseFinishedThread();
    currentPollInterval = std::numeric_limits<std::uint32_t>::max();
    if (auto* const agent = serviceAgent_.load()) {
        if (auto* const asset = agent->GetAsset(0)) {
            currentPollInterval = asset->GetAssetProfile().GetCurrentPollInterval();
        }
    }
    {
        const std::lock_guard lock(stateLock_);
        state_.modeStartTime = scheduling::gmtNow();
        state_.rsmStartTime = state_.modeStartTime;
        state_.inGracePeriod = true;
        if (state_.activityGracePeriod == 0) {
            state_.activityGracePeriod = kDefaultActivityGracePeriod;
        }
        if (state_.rsmMode == rsm::kNotActive) {
            state_.rsmMode = rsm::kForcePollGrace;
        }
        state_.gracePeriod = minutes;
        state_.pollingRate = pollingRateSeconds;
        // Asked for before there is a thread, so that a new thread's first pass finds it, however soon it
        // runs.
        state_.restartRequested = true;
    }
    KRXLog(40, " Web Service Extension is going to force poll.\n");
    KRXLog(40, " Polling Rate = %d seconds \n", pollingRateSeconds);
    KRXLog(40, " Polling Duration = %d min \n", minutes);
    KRXLog(250, "\n ZephanServices....ForcePoll called");
    const std::int8_t result = createThread();
    KRXLog(250, "\nZephanServices....Thread started 1");
    return result;
}

std::int8_t ZephanRSMSingleTon::Disconnect(const char* /*memberName*/,
                                           KRX::Messaging::SerializableString& result) {
    struct Outcome {
        const char* line;
        const char* text;
    };
    Outcome outcome{nullptr, nullptr};
    if (pollingThread_ == nullptr) {
        outcome = {"Disconnect : There is no active thread. ", "There is no active thread."};
    } else {
        const std::lock_guard lock(stateLock_);
        switch (state_.rsmMode) {
            case rsm::kNotActive:
                outcome = {"Disconnect : Agent is not in force poll mode. \n",
                           "Agent is not in force poll mode."};
                break;
            case rsm::kForcePollActivity:
                outcome = {"Disconnect : Can not disconnect as agent is in activity mode. \n",
                           "Agent is in activity mode."};
                break;
            case rsm::kForcePollGrace:
                outcome = {"Disconnect : Going to exit force polling after next poll. \n",
                           "Thread exited successfully."};
                state_.gracePeriod = 0.0;
                state_.rsmMode = rsm::kNotActive;
                state_.rsmStartTime = 0;
                state_.remoteActivity = false;
                state_.modeStartTime = scheduling::gmtNow();
                break;
            default:
                return 0;
        }
    }
    result.SetValue(outcome.text);
    KRXLog(40, "%s", outcome.line);
    return 0;
}

std::int8_t ZephanRSMSingleTon::scheduleDelayedProfile(std::int32_t pollingRateSeconds, std::int64_t start,
                                                       std::int64_t end, std::int32_t activityGraceMinutes) {
    releaseFinishedThread();
    KRXLog(40, "\n SCHEDULING RSM FOR %s", scheduling::calendarText(start).data());
    bool threadLeaves = false;
    {
        const std::lock_guard lock(stateLock_);
        threadLeaves = pollingThreadLeaves_;
        state_.delayedStartTime = start;
        state_.delayedEndTime = end;
        state_.delayedActivityGracePeriod = activityGraceMinutes;
        state_.delayedProfilePending = true;
        state_.delayedGracePeriod = static_cast<double>(end - start) / kSecondsPerMinute;
        state_.delayedPollingRate = pollingRateSeconds;
    }
    if (pollingThread_ == nullptr || threadLeaves) {
        const std::int8_t result = createThread();
        KRXLog(250, "\nZephanServices....Thread started 3");
        return result;
    }
    if (serviceAgent_ == nullptr) {
        return -1;
    }
    UpdateProperty();
    return 0;
}

void ZephanRSMSingleTon::setRemoteActivity(bool active) {
    bool entered = false;
    {
        const std::lock_guard lock(stateLock_);
        entered = active && !state_.remoteActivity && state_.gracePeriod != 0.0;
        state_.remoteActivity = active;
        state_.activityEntered = state_.activityEntered || entered;
    }
    if (entered) {
        enterRemoteActivityMode();
    }
}

void ZephanRSMSingleTon::enterRemoteActivityMode() {
    ZephanRSMSingleTon* const controller = getInstance();
    if (controller == nullptr) {
        KRXLog(50, "Failed to get RSMSingleton pointer in enterRemoteActivityMode. Returning... \n");
        return;
    }
    {
        const std::lock_guard lock(controller->stateLock_);
        if (!controller->state_.remoteActivity) {
            return;  // a disconnect has come in between
        }
        controller->state_.rsmMode = rsm::kForcePollActivity;
        controller->state_.modeStartTime = scheduling::gmtNow();
    }
    UpdateProperty();
}

void ZephanRSMSingleTon::resumeSavedRSM() {
    // A clock set back, or a damaged date, must not make the period longer than it was.
    const std::int64_t elapsed = std::max<std::int64_t>(0, scheduling::gmtNow() - resumeSavedAt_);
    const std::int64_t left =
        (std::int64_t{platform::readNumber(resumeGracePeriod_)} * kSecondsPerMinute - elapsed) /
        kSecondsPerMinute;
    using Limits = std::numeric_limits<std::int32_t>;
    std::uint32_t pollInterval = 0;
    ForcePoll(static_cast<std::int32_t>(std::clamp<std::int64_t>(left, Limits::min(), Limits::max())),
              platform::readNumber(resumePollingRate_), pollInterval);
}
