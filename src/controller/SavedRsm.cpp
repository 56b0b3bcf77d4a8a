// The record of a running force polling: what it holds, and what is left of it. Nothing here needs the agent.
#include "controller/ZephanRSMSingleTon.h"
#include "platform/portable/Number.h"
#include "records/GmtClock.h"
#include "records/TaggedText.h"

#include <algorithm>

bool ZephanRSMSingleTon::SavedRsm::readRecord(const char* contents, const char*& damaged) {
    using Value = char[records::kValueSize];
    Value date{}, time{}, rate{}, grace{};
    const records::TaggedValue values[] = {
        {"RSMStartDate", date, &records::isValidDate},
        {"RSMStartTime", time, &records::isValidTime},
        {"PollingRate", rate, &platform::isPositive},
        {"GracePeriod", grace, [](const char* number) noexcept { return *number >= '0' && *number <= '9'; }},
    };
    const bool complete = records::readTaggedValues(contents, values, "ZephanRSMSingleTon", damaged);
    *this = {records::stringToTime(date, time), platform::readNumber(rate), platform::readNumber(grace)};
    return complete;
}

bool ZephanRSMSingleTon::SavedRsm::isOver(std::int64_t now) const noexcept {
    return pollingRate < 1 || gracePeriod * records::kSecondsPerMinute <= now - savedAt;
}

std::int32_t ZephanRSMSingleTon::SavedRsm::minutesLeft(std::int64_t now) const noexcept {
    // A clock set back, or a damaged date, must not make the period longer than it was.
    const auto left = gracePeriod * records::kSecondsPerMinute - std::max<std::int64_t>(0, now - savedAt);
    return static_cast<std::int32_t>(std::max<std::int64_t>(0, left) / records::kSecondsPerMinute);
}
