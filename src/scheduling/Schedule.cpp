#include "scheduling/Schedule.h"

#include "scheduling/GmtClock.h"

#include <cstdio>

namespace scheduling {
namespace {

constexpr char kRootTag[] = "<RSMExecuteCommand>";
constexpr char kClassName[] = "ScheduleRSMHandler";

}  // namespace

Schedule::Record Schedule::record() const noexcept {
    Record text{};
    std::snprintf(
        text.data(), text.size(),
        "<RSMExecuteCommand><RSMStartDate>%s</RSMStartDate><RSMStartTime>%s</RSMStartTime><RSMEndDate>%s</RSMEndDate><RSMEndTime>%s</RSMEndTime><PollingRate>%s</PollingRate><GracePeriod>%s</GracePeriod></RSMExecuteCommand>",
        startDate, startTime, endDate, endTime, pollingRateText, gracePeriodText);
    return text;
}

bool Schedule::isRecord(const std::string& contents) noexcept {
    return contents.starts_with(kRootTag);
}

bool Schedule::readRecord(const std::string& contents) {
    const struct {
        const char* element;
        char (&value)[kValueSize];
    } values[] = {{"RSMStartDate", startDate},      {"RSMStartTime", startTime},
                  {"RSMEndDate", endDate},          {"RSMEndTime", endTime},
                  {"PollingRate", pollingRateText}, {"GracePeriod", gracePeriodText}};
    bool complete = true;
    for (const auto& [element, value] : values) {
        complete &= readTaggedValue(contents.c_str(), element, value, kClassName);
    }
    startTimeValue = stringToTime(startDate, startTime);
    endTimeValue = stringToTime(endDate, endTime);
    return complete;
}

}  // namespace scheduling
