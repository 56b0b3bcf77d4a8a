// The record of a running force polling: what it holds, and what is left of it. Nothing here needs the agent.
#include "controller/ZephanRSMSingleTon.h"
#include "platform/Number.h"
#include "scheduling/GmtClock.h"
#include "scheduling/ScheduleRSMHandler.h"
#include "scheduling/TaggedText.h"

#include <algorithm>

bool ZephanRSMSingleTon::SavedRsm::readRecord(const char* contents, const char*& damaged) {
    using Value = char[scheduling::kValueSize];
    Value date{}, time{}, rate{}, grace{};
    const scheduling::TaggedValue values[] = {
        {"RSMStartDate", date, &ScheduleRSMHandler::isValidDate},
        {"RSMStartTime", time, &ScheduleRSMHandler::isValidTime},
        {"PollingRate", rate, &platform::isPositive},
        {"GracePeriod", grace, [](const char* number) noexcept { return *number >= '0' && *number <= '9'; }},
    };
    const bool complete = scheduling::readTaggedValues(contents, values, "ZephanRSMSingleTon", damaged);
    *this = {scheduling::stringToTime(date, time), platform::readNumber(rate), platform::readNumber(grace)};
    return complete;
}

bool ZephanRSMSingleTon::SavedRsm::isOver(std::int64_t now) const noexcept {
    return pollingRate < 1 || gracePeriod * scheduling::kSecondsPerMinute <= now - savedAt;
}

std::int32_t ZephanRSMSingleTon::SavedRsm::minutesLeft(std::int64_t now) const noexcept {
    // A clock set back, or a damaged date, must not make the period longer than it was.
    const auto left = gracePeriod * scheduling::kSecondsPerMinute - std::max<std::int64_t>(0, now - savedAt);
    return static_cast<std::int32_t>(std::max<std::int64_t>(0, left) / scheduling::kSecondsPerMinute);
}
