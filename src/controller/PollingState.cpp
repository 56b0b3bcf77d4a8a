// What the polling loop makes of the RSM state: plain arithmetic on it, called under the state lock.
#include "controller/ZephanRSMSingleTon.h"
#include "scheduling/GmtClock.h"

#include <algorithm>
#include <limits>

namespace {

constexpr std::int32_t kSecondsPerMinute = 60;

std::int32_t withoutFraction(double value) noexcept {
    using Limits = std::numeric_limits<std::int32_t>;
    return static_cast<std::int32_t>(std::clamp<double>(value, Limits::min(), Limits::max()));
}

}  // namespace

std::uint32_t ZephanRSMSingleTon::State::pollsPerMinute() const noexcept {
    return pollingRate < 1 ? 0U : static_cast<std::uint32_t>(kSecondsPerMinute / pollingRate);
}

double ZephanRSMSingleTon::State::pollLimit() const noexcept {
    return pollsPerMinute() * gracePeriod;
}

std::int32_t ZephanRSMSingleTon::State::wholeMinutes() const noexcept {
    return withoutFraction(gracePeriod);
}

std::int32_t ZephanRSMSingleTon::State::secondsUntilDelayedStart() const noexcept {
    return scheduling::secondsBetween(scheduling::gmtNow(), delayedStartTime);
}

void ZephanRSMSingleTon::State::convertDelayed() noexcept {
    delayedProfilePending = false;
    gracePeriod = delayedGracePeriod;
    delayedGracePeriod = 0.0;
    modeStartTime = scheduling::gmtNow();
    delayedStartTime = 0;
    activityGracePeriod = delayedActivityGracePeriod;
    delayedActivityGracePeriod = 0;
    pollingRate = withoutFraction(delayedPollingRate);
    delayedPollingRate = 0.0;
}

void ZephanRSMSingleTon::State::convertDelayed(std::int32_t mode) noexcept {
    rsmStartTime = delayedStartTime;
    convertDelayed();
    rsmMode = mode == rsm::kForcePollActivity || mode == rsm::kForcePollGrace ? mode : rsm::kNotActive;
}

bool ZephanRSMSingleTon::State::startWhenDue() noexcept {
    if (!delayedProfilePending || secondsUntilDelayedStart() > 0) {
        return false;
    }
    convertDelayed(rsm::kForcePollGrace);
    inGracePeriod = true;
    return true;
}

bool ZephanRSMSingleTon::State::endWhenOver(std::uint32_t& pollCount, bool canPoll) noexcept {
    if (restartRequested) {
        pollCount = 0;  // polls of the period before do not count against the new one
    }
    const bool rateUsable = canPoll && pollingRate > 0;
    if (rateUsable && (remoteActivity || pollCount < pollLimit())) {
        return false;
    }
    gracePeriod = 0.0;
    rsmMode = rsm::kNotActive;
    pollingRate = 0;
    rsmStartTime = 0;
    modeStartTime = scheduling::gmtNow();
    restartRequested = false;
    return true;
}

ZephanRSMSingleTon::State::Effects ZephanRSMSingleTon::State::restartOrFirstPass(
    std::uint32_t& pollCount) noexcept {
    if (restartRequested) {
        restartRequested = false;
        pollCount = 0;
    }
    return {.report = false, .save = pollCount == 0};
}

ZephanRSMSingleTon::State::Effects ZephanRSMSingleTon::State::takeUpActivity(
    std::uint32_t& pollCount) noexcept {
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

ZephanRSMSingleTon::State::Effects ZephanRSMSingleTon::State::endActivity(std::uint32_t& pollCount) noexcept {
    if (pollCount != pollLimit() - 1.0 || inGracePeriod || remoteActivity) {
        return {};
    }
    rsmMode = rsm::kForcePollGrace;
    modeStartTime = scheduling::gmtNow();
    gracePeriod = activityGracePeriod;
    pollCount = 0;
    activityGracePeriod = 0;
    inGracePeriod = true;
    return {.report = true, .save = true};
}

ZephanRSMSingleTon::State::Effects ZephanRSMSingleTon::State::holdForActivity(
    std::uint32_t& pollCount) noexcept {
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

ZephanRSMSingleTon::State::Effects ZephanRSMSingleTon::State::markLastPoll(
    std::uint32_t& pollCount) noexcept {
    // A period that was ordered anew meanwhile is not over: its polls have yet to be counted.
    if (pollCount == pollLimit() - 1.0 && inGracePeriod && !restartRequested) {
        activityGracePeriod = 0;
        gracePeriod = 0.0;
    }
    return {};
}

ZephanRSMSingleTon::State::Effects ZephanRSMSingleTon::State::takeOverDueProfile(
    std::uint32_t& pollCount) noexcept {
    if (!delayedProfilePending || secondsUntilDelayedStart() >= 0) {
        return {};
    }
    convertDelayed();
    pollCount = 0;
    rsmStartTime = modeStartTime;
    return {.report = true, .save = true};
}

ZephanRSMSingleTon::State::Effects ZephanRSMSingleTon::State::takeOverDueProfileAfterActivity(
    std::uint32_t& /*pollCount*/) noexcept {
    if (!delayedProfilePending || secondsUntilDelayedStart() >= 0 || remoteActivity) {
        return {};
    }
    convertDelayed(rsm::kForcePollGrace);
    return {.report = true, .save = true};
}
