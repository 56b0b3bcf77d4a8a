#include "scheduling/Schedule.h"

#include "platform/Number.h"
#include "scheduling/GmtClock.h"
#include "scheduling/ScheduleRSMHandler.h"

#include <cstdio>

namespace scheduling {

Schedule::Record Schedule::record() const noexcept {
    Record text{};
    std::snprintf(
        text.data(), text.size(),
        "<RSMExecuteCommand><RSMStartDate>%s</RSMStartDate><RSMStartTime>%s</RSMStartTime><RSMEndDate>%s</RSMEndDate><RSMEndTime>%s</RSMEndTime><PollingRate>%s</PollingRate><GracePeriod>%s</GracePeriod></RSMExecuteCommand>",
        startDate, startTime, endDate, endTime, pollingRateText, gracePeriodText);
    return text;
}

bool Schedule::readRecord(const std::string& contents, const char*& damaged) {
    const TaggedValue values[] = {
        {"RSMStartDate", startDate, &ScheduleRSMHandler::isValidDate},
        {"RSMStartTime", startTime, &ScheduleRSMHandler::isValidTime},
        {"RSMEndDate", endDate, &ScheduleRSMHandler::isValidDate},
        {"RSMEndTime", endTime, &ScheduleRSMHandler::isValidTime},
        {"PollingRate", pollingRateText, &platform::isPositive},
        {"GracePeriod", gracePeriodText, &platform::isPositive},
    };
    const bool complete = readTaggedValues(contents.c_str(), values, "ScheduleRSMHandler", damaged);
    startTimeValue = stringToTime(startDate, startTime);
    endTimeValue = stringToTime(endDate, endTime);
    return complete;
}

}  // namespace scheduling
