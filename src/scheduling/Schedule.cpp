#include "scheduling/Schedule.h"

#include "platform/Number.h"
#include "scheduling/GmtClock.h"
#include "scheduling/ScheduleRSMHandler.h"

#include <cstdio>
#include <string_view>

// Apart from the commands, so that reading a record needs no agent.
bool ScheduleRSMHandler::isValidDate(const char* date) noexcept {
    const std::string_view text(date);
    return text.size() == sizeof("2026:12:31") - 1 && platform::readNumber(text, 0, 4) >= 1 &&
           platform::readNumber(text, 5, 2) >= 1 && platform::readNumber(text, 8, 2) >= 1;
}

bool ScheduleRSMHandler::isValidTime(const char* time) noexcept {
    const std::string_view text(time);
    return text.size() == sizeof("23:59:59") - 1 && platform::readNumber(text, 0, 2) >= 0 &&
           platform::readNumber(text, 3, 2) >= 0 && platform::readNumber(text, 6, 2) >= 0;
}

namespace scheduling {

Schedule::Record Schedule::record() const noexcept {
    Record text{};
    std::snprintf(
        text.data(), text.size(),
        "<RSMExecuteCommand><RSMStartDate>%s</RSMStartDate><RSMStartTime>%s</RSMStartTime><RSMEndDate>%s</RSMEndDate><RSMEndTime>%s</RSMEndTime><PollingRate>%s</PollingRate><GracePeriod>%s</GracePeriod></RSMExecuteCommand>",
        startDate, startTime, endDate, endTime, pollingRateText, gracePeriodText);
    return text;
}

bool Schedule::readRecord(const char* contents, const char*& damaged) {
    const TaggedValue values[] = {
        {"RSMStartDate", startDate, &ScheduleRSMHandler::isValidDate},
        {"RSMStartTime", startTime, &ScheduleRSMHandler::isValidTime},
        {"RSMEndDate", endDate, &ScheduleRSMHandler::isValidDate},
        {"RSMEndTime", endTime, &ScheduleRSMHandler::isValidTime},
        {"PollingRate", pollingRateText, &platform::isPositive},
        {"GracePeriod", gracePeriodText, &platform::isPositive},
    };
    const bool complete = readTaggedValues(contents, values, "ScheduleRSMHandler", damaged);
    startTimeValue = stringToTime(startDate, startTime);
    endTimeValue = stringToTime(endDate, endTime);
    return complete;
}

}  // namespace scheduling
