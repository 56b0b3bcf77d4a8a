// The "ScheduleRSM" command: what it takes, how it is checked, what it answers.
#include "ZephanRSMLogger.h"
#include "controller/ZephanRSMSingleTon.h"
#include "platform/agent/Logging.h"
#include "platform/portable/Number.h"
#include "records/GmtClock.h"
#include "scheduling/PropertyAnswer.h"
#include "scheduling/ScheduleRSMHandler.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <span>
#include <string_view>

namespace {

using scheduling::Schedule;

constexpr std::int32_t kDone = 0;
constexpr std::int32_t kFailed = 1;
constexpr std::string_view kImmediate = "immediate";

bool isImmediate(const char* text) noexcept {
    return text == kImmediate;
}

bool isAcceptableDate(const char* text) noexcept {
    return isImmediate(text) || records::isValidDate(text);
}

bool isAcceptableTime(const char* text) noexcept {
    return isImmediate(text) || records::isValidTime(text);
}

/// One of the command's four properties.
struct Parameter {
    const char* name;
    char (Schedule::*field)[records::kValueSize];
    const char* logFormat;
    const char* defaultValue;
    bool (*isAcceptable)(const char* text) noexcept;
    const char* rejection;
};

constexpr std::array<Parameter, 4> kParameters{{
    {"RSMStartDate", &Schedule::startDate, "\n RSMStartDate = %s ", "immediate", &isAcceptableDate,
     "Date should be in YYYY:MM:DD format. e.g. 2007:09:30"},
    {"RSMStartTime", &Schedule::startTime, "\n RSMStartTime = %s ", "immediate", &isAcceptableTime,
     "Time should be in HH:MM:Sec format. e.g. 05:06:00"},
    {"PollingRate", &Schedule::pollingRateText, "\n PollingRate = %s ", "60", &platform::isPositive,
     "Polling Rate should be positive integer greater than 0."},
    {"GracePeriod", &Schedule::gracePeriodText, "\n GracePeriod = %s ", "30", &platform::isPositive,
     "Grace Period should be positive integer greater than 0."},
}};

using Rejected = std::array<bool, kParameters.size()>;

/// Puts the command's properties, or their defaults, into the schedule's fields; the log lines go with each.
Rejected takeIn(const PropList* input, Schedule& schedule) {
    Rejected given{};
    Rejected tooLong{};
    const bool hasRecords = input != nullptr && input->properties != nullptr && input->count > 0;
    const std::span<const Prop> properties(hasRecords ? input->properties : nullptr,
                                           hasRecords ? static_cast<std::size_t>(input->count) : 0);
    for (const Prop& record : properties) {
        if (record.name == nullptr || record.value == nullptr) {
            continue;
        }
        for (std::size_t i = 0; i < kParameters.size(); ++i) {
            if (std::strcmp(record.name, kParameters[i].name) == 0) {
                records::copyValue(schedule.*kParameters[i].field, record.value);
                given[i] = true;
                tooLong[i] = std::strlen(record.value) >= records::kValueSize;
                KRXLog(level::kWarn, kParameters[i].logFormat, record.value);
            }
        }
    }
    Rejected rejected{};
    for (std::size_t i = 0; i < kParameters.size(); ++i) {
        if (given[i]) {
            rejected[i] = tooLong[i] || !kParameters[i].isAcceptable(schedule.*kParameters[i].field);
        } else {
            records::copyValue(schedule.*kParameters[i].field, kParameters[i].defaultValue);
        }
    }
    return rejected;
}

/// Answers with a message for each rejected property; the log lines go with the list.
void giveRejections(const Rejected& rejected, PropList** response) {
    if (response == nullptr) {
        return;
    }
    std::array<AnswerEntry, 1 + kParameters.size()> entries{{{"CommandResult", "Failed"}}};
    std::size_t count = 1;
    for (std::size_t i = 0; i < kParameters.size(); ++i) {
        if (rejected[i]) {
            KRXLog(level::kWarn, "\n Error in Scheduling RSM = %s ", kParameters[i].rejection);
            entries[count++] = {kParameters[i].name, kParameters[i].rejection};
        }
    }
    giveAnswer(response, std::span(entries).first(count));
}

void computePeriod(Schedule& schedule, std::int64_t now) {
    const bool immediate = isImmediate(schedule.startDate) || isImmediate(schedule.startTime);
    schedule.startTimeValue = immediate ? now : records::stringToTime(schedule.startDate, schedule.startTime);
    schedule.endTimeValue =
        schedule.startTimeValue + platform::readNumber(schedule.gracePeriodText) * records::kSecondsPerMinute;
    if (immediate) {
        ScheduleRSMHandler::dateToString(schedule.startTimeValue, schedule.startDate, schedule.startTime);
    }
    ScheduleRSMHandler::dateToString(schedule.endTimeValue, schedule.endDate, schedule.endTime);
}

}  // namespace

std::int32_t ScheduleRSMHandler::executeScheduleCommand(const PropList* input, PropList** response,
                                                        ZephanRSMSingleTon& controller) {
    Schedule ordered;
    const Rejected rejected = takeIn(input, ordered);
    if (std::find(rejected.begin(), rejected.end(), true) != rejected.end()) {
        keepRejected(ordered);
        giveRejections(rejected, response);
        return kFailed;
    }
    // For all of the order: while it is stored the second may end, and with it the first of its minutes.
    const std::int64_t now = records::gmtNow();
    computePeriod(ordered, now);
    if (!ordered.isCurrent(now)) {
        store(ordered, nullptr, controller);
        giveAnswer(
            response,
            std::array<AnswerEntry, 2>{
                {{"CommandResult", "Failed"},
                 {"RSMStartDate", "RSM is scheduled for elapsed date. Please check the date entered."}}});
        return kFailed;
    }
    const RsmOrder order = orderOf(ordered, now);
    store(ordered, &order, controller);
    controller.carryOut(order);
    std::array<char, records::kValueSize + 4> gmtStartTime{};
    std::snprintf(gmtStartTime.data(), gmtStartTime.size(), "%s GMT", ordered.startTime);
    giveAnswer(response, std::array<AnswerEntry, 5>{{{"CommandResult", "Pass"},
                                                     {"RSMStartDate", ordered.startDate},
                                                     {"RSMStartTime", gmtStartTime.data()},
                                                     {"PollingRate", ordered.pollingRateText},
                                                     {"GracePeriod", ordered.gracePeriodText}}});
    return kDone;
}
