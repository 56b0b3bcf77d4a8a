#include "controller/RsmState.h"

#include "records/GmtClock.h"

#include <algorithm>
#include <limits>
#include <tuple>

namespace {

constexpr std::int32_t kDefaultActivityGracePeriod = 30;  // minutes

std::int32_t withoutFraction(double value) noexcept {
    using Limits = std::numeric_limits<std::int32_t>;
    return static_cast<std::int32_t>(std::clamp<double>(value, Limits::min(), Limits::max()));
}

}  // namespace

std::uint32_t RsmState::pollsPerMinute() const noexcept {
    return pollingRate < 1 ? 0U : static_cast<std::uint32_t>(records::kSecondsPerMinute / pollingRate);
}

std::int32_t RsmState::wholeMinutes() const noexcept {
    return withoutFraction(gracePeriod);
}

bool RsmState::isSameProfile(const RsmState& one, const RsmState& other) noexcept {
    const auto told = [](const RsmState& state) {
        return std::tie(state.rsmMode, state.rsmStartTime, state.modeStartTime, state.gracePeriod,
                        state.pollingRate, state.delayedStartTime, state.delayedPollingRate,
                        state.delayedGracePeriod);
    };
    return told(one) == told(other);
}

// ---- Where it is

RsmState::State RsmState::state() const noexcept {
    if (rsmMode != rsm::kNotActive) {
        return rsmMode == rsm::kForcePollActivity ? State::Activity
               : remoteActivity                   ? State::GraceWithActivity
                                                  : State::Grace;
    }
    if (polling || restartRequested) {
        return remoteActivity ? State::EndingWithActivity : State::Ending;
    }
    return delayedProfilePending ? State::Waiting : State::Idle;
}

bool RsmState::isConsistent() const noexcept {
    const bool isOn = rsmMode == rsm::kForcePollGrace || rsmMode == rsm::kForcePollActivity;
    const bool isAtRest = state() == State::Idle || state() == State::Waiting;
    const bool isDelayedEmpty =
        delayedStartTime == 0 && delayedGracePeriod == 0.0 && delayedPollingRate == 0.0;
    return (isOn || rsmMode == rsm::kNotActive) && (rsmStartTime != 0) == isOn &&
           (isOn ? polling || restartRequested : gracePeriod == 0.0) &&
           (!isAtRest || (pollingRate == 0 && !activityEntered)) && (delayedProfilePending || isDelayedEmpty);
}

// ---- Orders

void RsmState::forcePoll(std::int32_t minutes, std::int32_t rate, std::int64_t now) noexcept {
    modeStartTime = now;
    rsmStartTime = now;
    inGracePeriod = true;
    if (activityGracePeriod == 0) {
        activityGracePeriod = kDefaultActivityGracePeriod;
    }
    if (rsmMode == rsm::kNotActive) {
        rsmMode = rsm::kForcePollGrace;
    }
    gracePeriod = minutes;
    pollingRate = rate;
    // Asked for before there is a thread, so that a new thread's first pass finds it, however soon it runs.
    restartRequested = true;
}

std::int32_t RsmState::disconnect(std::int64_t now) noexcept {
    const std::int32_t found = rsmMode;
    if (found == rsm::kForcePollGrace) {
        gracePeriod = 0.0;
        rsmMode = rsm::kNotActive;
        rsmStartTime = 0;
        remoteActivity = false;
        modeStartTime = now;
    }
    return found;
}

void RsmState::scheduleDelayedProfile(std::int32_t rate, std::int64_t start, std::int64_t end,
                                      std::int32_t activityGraceMinutes) noexcept {
    delayedStartTime = start;
    delayedEndTime = end;
    delayedActivityGracePeriod = activityGraceMinutes;
    delayedProfilePending = true;
    delayedGracePeriod = static_cast<double>(end - start) / records::kSecondsPerMinute;
    delayedPollingRate = rate;
}

bool RsmState::setRemoteActivity(bool active, std::int64_t now) noexcept {
    const bool enters = active && !remoteActivity && gracePeriod != 0.0;
    if (enters) {
        enterRemoteActivityMode(now);
        activityEntered = true;
    }
    remoteActivity = active;
    return enters;
}

void RsmState::convertDelayedToNormal(std::int64_t now) noexcept {
    delayedProfilePending = false;
    gracePeriod = delayedGracePeriod;
    delayedGracePeriod = 0.0;
    modeStartTime = now;
    delayedStartTime = 0;
    activityGracePeriod = delayedActivityGracePeriod;
    delayedActivityGracePeriod = 0;
    pollingRate = withoutFraction(delayedPollingRate);
    delayedPollingRate = 0.0;
}

void RsmState::convertDelayedToNormal(std::int32_t mode, std::int64_t now) noexcept {
    rsmStartTime = delayedStartTime;
    convertDelayedToNormal(now);
    rsmMode = mode == rsm::kForcePollActivity || mode == rsm::kForcePollGrace ? mode : rsm::kNotActive;
}

// ---- The polling loop

bool RsmState::startWhenDue(std::int64_t now) noexcept {
    if (!delayedProfilePending || !isDelayedStartDue(now)) {
        return false;
    }
    convertDelayedToNormal(rsm::kForcePollGrace, now);
    inGracePeriod = true;
    return true;
}

bool RsmState::endWhenOver(bool canPoll, std::int64_t now) noexcept {
    if (restartRequested) {
        pollCount = 0;  // polls of the period before do not count against the new one
    }
    const bool rateUsable = canPoll && pollingRate > 0;
    if (rateUsable && (remoteActivity || pollCount < pollLimit())) {
        return false;
    }
    breakOff(now);
    return true;
}

void RsmState::breakOff(std::int64_t now) noexcept {
    gracePeriod = 0.0;
    rsmMode = rsm::kNotActive;
    pollingRate = 0;
    rsmStartTime = 0;
    modeStartTime = now;
    restartRequested = false;
    activityEntered = false;
    polling = false;
}

RsmState::Effects RsmState::restartOrFirstPass(std::int64_t /*now*/) noexcept {
    if (restartRequested) {
        restartRequested = false;
        pollCount = 0;
    }
    return {.report = false, .save = pollCount == 0};
}

RsmState::Effects RsmState::takeUpActivity(std::int64_t /*now*/) noexcept {
    if (!activityEntered) {
        return {};
    }
    const bool first = inGracePeriod;
    if (first) {
        activityGracePeriod = wholeMinutes();
        inGracePeriod = false;
    }
    activityEntered = false;
    pollCount = pollsPerMinute() * static_cast<std::uint32_t>(wholeMinutes()) - 1U;
    return {.report = false, .save = first};
}

RsmState::Effects RsmState::endActivity(std::int64_t now) noexcept {
    if (pollCount != pollLimit() - 1.0 || inGracePeriod || remoteActivity) {
        return {};
    }
    rsmMode = rsm::kForcePollGrace;
    modeStartTime = now;
    gracePeriod = activityGracePeriod;
    pollCount = 0;
    activityGracePeriod = 0;
    inGracePeriod = true;
    return {.report = true, .save = true};
}

RsmState::Effects RsmState::holdForActivity(std::int64_t /*now*/) noexcept {
    if (!remoteActivity) {
        return {};
    }
    if (inGracePeriod) {
        activityGracePeriod = wholeMinutes();
        inGracePeriod = false;
    }
    pollCount = pollsPerMinute() * static_cast<std::uint32_t>(wholeMinutes()) - 2U;
    return {};
}

RsmState::Effects RsmState::markLastPoll(std::int64_t /*now*/) noexcept {
    // A period that was ordered anew in between is not over: its polls have yet to be counted. Nor is one in
    // which remote activity has begun since the step before.
    if (pollCount == pollLimit() - 1.0 && inGracePeriod && !restartRequested && !remoteActivity) {
        activityGracePeriod = 0;
        gracePeriod = 0.0;
    }
    return {};
}

RsmState::Effects RsmState::takeOverDueProfile(std::int64_t now) noexcept {
    if (!isDueWhilePolling(now)) {
        return {};
    }
    convertDelayedToNormal(now);
    pollCount = 0;
    rsmStartTime = modeStartTime;
    return {.report = true, .save = true};
}

RsmState::Effects RsmState::takeOverDueProfileAfterActivity(std::int64_t now) noexcept {
    if (!isDueWhilePolling(now) || remoteActivity) {
        return {};
    }
    convertDelayedToNormal(rsm::kForcePollGrace, now);
    return {.report = true, .save = true};
}

RsmState::Effects RsmState::countPoll(std::int64_t /*now*/) noexcept {
    ++pollCount;
    return {};
}
