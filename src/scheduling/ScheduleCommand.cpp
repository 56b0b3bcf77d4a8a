// The "ScheduleRSM" command: what it takes, how it is checked, what it answers.
#include "ZephanRSMLogger.h"
#include "platform/Number.h"
#include "platform/agent/Logging.h"
#include "scheduling/GmtClock.h"
#include "scheduling/PropertyAnswer.h"
#include "scheduling/ScheduleRSMHandler.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <span>
#include <string_view>

namespace {

constexpr std::int32_t kDone = 0;
constexpr std::int32_t kFailed = 1;
constexpr std::string_view kImmediate = "immediate";
constexpr std::int64_t kSecondsPerMinute = 60;
constexpr std::size_t kRecordSize = 1000;
constexpr std::size_t kDateLength = 10;
constexpr std::size_t kTimeLength = 8;

bool isImmediate(const char* text) noexcept {
    return text == kImmediate;
}

int numberIn(std::string_view text, std::size_t position, std::size_t length) noexcept {
    return platform::readNumber(text.substr(position, length));
}

bool isAcceptableDate(const char* text) noexcept {
    return isImmediate(text) || ScheduleRSMHandler::isValidDate(text);
}

bool isAcceptableTime(const char* text) noexcept {
    return isImmediate(text) || ScheduleRSMHandler::isValidTime(text);
}

bool isPositive(const char* text) noexcept {
    return platform::readNumber(text) >= 1;
}

/// One of the command's four properties.
struct Parameter {
    const char* name;
    const char* logFormat;
    const char* defaultValue;
    bool (*isAcceptable)(const char* text) noexcept;
    const char* rejection;
};

constexpr std::array<Parameter, 4> kParameters{{
    {"RSMStartDate", "\n RSMStartDate = %s ", "immediate", &isAcceptableDate,
     "Date should be in YYYY:MM:DD format. e.g. 2007:09:30"},
    {"RSMStartTime", "\n RSMStartTime = %s ", "immediate", &isAcceptableTime,
     "Time should be in HH:MM:Sec format. e.g. 05:06:00"},
    {"PollingRate", "\n PollingRate = %s ", "60", &isPositive,
     "Polling Rate should be positive integer greater than 0."},
    {"GracePeriod", "\n GracePeriod = %s ", "30", &isPositive,
     "Grace Period should be positive integer greater than 0."},
}};

}  // namespace

struct ScheduleRSMHandler::Rejections {
    std::array<bool, kParameters.size()> rejected{};

    bool any() const noexcept { return std::find(rejected.begin(), rejected.end(), true) != rejected.end(); }

    /// Answers with a message for each rejected property; the log lines go with the list.
    void give(PropList** response) const {
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
};

bool ScheduleRSMHandler::isValidDate(const char* date) noexcept {
    const std::string_view text(date);
    return text.size() == kDateLength && numberIn(text, 0, 4) >= 1 && numberIn(text, 5, 2) >= 1 &&
           numberIn(text, 8, 2) >= 1;
}

bool ScheduleRSMHandler::isValidTime(const char* time) noexcept {
    const std::string_view text(time);
    return text.size() == kTimeLength && numberIn(text, 0, 2) >= 0 && numberIn(text, 3, 2) >= 0 &&
           numberIn(text, 6, 2) >= 0;
}

std::int32_t ScheduleRSMHandler::executeScheduleCommand(const PropList* input, PropList** response) {
    const std::lock_guard lock(commandLock_);
    Rejections rejections;
    takeIn(input, rejections);
    if (rejections.any()) {
        rejections.give(response);
        return kFailed;
    }
    computePeriod();
    storeRecord();
    if (!isScheduleCurrent()) {
        giveAnswer(
            response,
            std::array<AnswerEntry, 2>{
                {{"CommandResult", "Failed"},
                 {"RSMStartDate", "RSM is scheduled for elapsed date. Please check the date entered."}}});
        return kFailed;
    }
    scheduleRSM();
    std::array<char, scheduling::kValueSize + 4> gmtStartTime{};
    std::snprintf(gmtStartTime.data(), gmtStartTime.size(), "%s GMT", startTime_);
    giveAnswer(response, std::array<AnswerEntry, 5>{{{"CommandResult", "Pass"},
                                                     {"RSMStartDate", startDate_},
                                                     {"RSMStartTime", gmtStartTime.data()},
                                                     {"PollingRate", pollingRateText_},
                                                     {"GracePeriod", gracePeriodText_}}});
    return kDone;
}

void ScheduleRSMHandler::takeIn(const PropList* input, Rejections& rejections) {
    char(*const fields[kParameters.size()])[scheduling::kValueSize] = {&startDate_, &startTime_,
                                                                       &pollingRateText_, &gracePeriodText_};
    std::array<bool, kParameters.size()> given{};
    std::array<bool, kParameters.size()> tooLong{};
    const bool hasRecords = input != nullptr && input->properties != nullptr && input->count > 0;
    const std::span<const Prop> records(hasRecords ? input->properties : nullptr,
                                        hasRecords ? static_cast<std::size_t>(input->count) : 0);
    for (const Prop& record : records) {
        if (record.name == nullptr || record.value == nullptr) {
            continue;
        }
        for (std::size_t i = 0; i < kParameters.size(); ++i) {
            if (std::strcmp(record.name, kParameters[i].name) == 0) {
                scheduling::copyValue(*fields[i], record.value);
                given[i] = true;
                tooLong[i] = std::strlen(record.value) >= scheduling::kValueSize;
                KRXLog(level::kWarn, kParameters[i].logFormat, record.value);
            }
        }
    }
    for (std::size_t i = 0; i < kParameters.size(); ++i) {
        if (given[i]) {
            rejections.rejected[i] = tooLong[i] || !kParameters[i].isAcceptable(*fields[i]);
        } else {
            scheduling::copyValue(*fields[i], kParameters[i].defaultValue);
        }
    }
}

void ScheduleRSMHandler::computePeriod() {
    const bool immediate = isImmediate(startDate_) || isImmediate(startTime_);
    startTimeValue_ = immediate ? scheduling::gmtNow() : scheduling::stringToTime(startDate_, startTime_);
    endTimeValue_ = startTimeValue_ + platform::readNumber(gracePeriodText_) * kSecondsPerMinute;
    if (immediate) {
        dateToString(startTimeValue_, startDate_, startTime_);
    }
    dateToString(endTimeValue_, endDate_, endTime_);
}

void ScheduleRSMHandler::storeRecord() {
    if (!scheduleFile_.isOpen()) {
        return;
    }
    std::array<char, kRecordSize> record{};
    const int length =
        std::snprintf(record.data(), record.size(),
                      "<RSMExecuteCommand><RSMStartDate>%s</RSMStartDate><RSMStartTime>%s</"
                      "RSMStartTime><RSMEndDate>%s</RSMEndDate>"
                      "<RSMEndTime>%s</RSMEndTime><PollingRate>%s</PollingRate><GracePeriod>%s</"
                      "GracePeriod></RSMExecuteCommand>",
                      startDate_, startTime_, endDate_, endTime_, pollingRateText_, gracePeriodText_);
    KRXLog(level::kForce, "\n GOING TO PUT IN A FILE = %s", record.data());
    if (scheduleFile_.overwriteStart({record.data(), static_cast<std::size_t>(length)})) {
        scheduleFile_.sync();
    }
}
