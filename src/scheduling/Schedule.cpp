#include "scheduling/Schedule.h"

#include "platform/portable/Number.h"
#include "records/GmtClock.h"

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

bool Schedule::readRecord(const char* contents, const char*& damaged) {
    const records::TaggedValue values[] = {
        {"RSMStartDate", startDate, &records::isValidDate},
        {"RSMStartTime", startTime, &records::isValidTime},
        {"RSMEndDate", endDate, &records::isValidDate},
        {"RSMEndTime", endTime, &records::isValidTime},
        {"PollingRate", pollingRateText, &platform::isPositive},
        {"GracePeriod", gracePeriodText, &platform::isPositive},
    };
    const bool complete = records::readTaggedValues(contents, values, "ScheduleRSMHandler", damaged);
    startTimeValue = records::stringToTime(startDate, startTime);
    endTimeValue = records::stringToTime(endDate, endTime);
    return complete;
}

}  // namespace scheduling
