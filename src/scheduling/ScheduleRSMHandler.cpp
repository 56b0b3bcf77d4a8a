#include "scheduling/ScheduleRSMHandler.h"

#include "controller/ZephanRSMSingleTon.h"
#include "platform/Console.h"
#include "platform/Number.h"
#include "platform/agent/Logging.h"
#include "scheduling/GmtClock.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <limits>
#include <new>

namespace {

constexpr char kRootTag[] = "<RSMExecuteCommand>";
constexpr char kClassName[] = "ScheduleRSMHandler";
constexpr std::int64_t kLargestContents = std::int64_t{1}
                                          << 20U;  // of a file that anybody may have put there
constexpr std::size_t kDateTextSize = 40;
constexpr std::int64_t kSecondsPerMinute = 60;

}  // namespace

ScheduleRSMHandler::ScheduleRSMHandler(const char* path) : filePath_(path) {
    scheduleFile_ = platform::File::open(filePath_, platform::OpenMode::Create);
    if (scheduleFile_.isOpen()) {
        load();
    }
}

void ScheduleRSMHandler::load() {
    const auto size = static_cast<std::size_t>(std::min(scheduleFile_.size(), kLargestContents));
    if (size == 0) {
        return;
    }
    const std::unique_ptr<char[]> contents(new (std::nothrow) char[size + 1]);
    if (!contents) {
        // The file stays open and as it is: the next start finds the record.
        KRXLog(level::kForce, "new Failed in ScheduleRSMHandler of ScheduleRSMHandler. \n");
        return;
    }
    const char* const text = contents.get();
    contents[scheduleFile_.readStart(contents.get(), size)] = '\0';
    if (scheduling::getTagEndIndex(text, kRootTag) != static_cast<std::int32_t>(sizeof kRootTag - 1)) {
        platform::echo(filePath_.c_str());
        platform::echo(" file is not in correct format.");
        return;
    }
    scheduling::readTaggedValue(text, "RSMStartDate", startDate_, kClassName);
    scheduling::readTaggedValue(text, "RSMStartTime", startTime_, kClassName);
    scheduling::readTaggedValue(text, "RSMEndDate", endDate_, kClassName);
    scheduling::readTaggedValue(text, "RSMEndTime", endTime_, kClassName);
    scheduling::readTaggedValue(text, "PollingRate", pollingRateText_, kClassName);
    scheduling::readTaggedValue(text, "GracePeriod", gracePeriodText_, kClassName);
    startTimeValue_ = scheduling::stringToTime(startDate_, startTime_);
    endTimeValue_ = scheduling::stringToTime(endDate_, endTime_);
}

bool ScheduleRSMHandler::isScheduleCurrent() const noexcept {
    return endTimeValue_ > scheduling::gmtNow();
}

void ScheduleRSMHandler::scheduleRSM() {
    const std::int64_t now = scheduling::gmtNow();
    const auto controller = ZephanRSMSingleTon::getInstance();
    if (controller == nullptr) {
        KRXLog(level::kError,
               "Failed to get RSMSingleton pointer in ScheduleRSMHandler::scheduleRSM(). Returning... \n");
        return;
    }
    const std::int32_t rate = platform::readNumber(pollingRateText_);
    if (rate < 1) {
        KRXLog(level::kError,
               "Failed to schedule RSM ScheduleRSMHandler::scheduleRSM(). As polling rate is not greater "
               "than 0. ... \n");
        return;
    }
    if (startTimeValue_ > now) {
        controller->scheduleDelayedProfile(rate, startTimeValue_, endTimeValue_,
                                           platform::readNumber(gracePeriodText_));
        return;
    }
    const std::int64_t minutesLeft = (endTimeValue_ - now) / kSecondsPerMinute;
    std::uint32_t pollInterval = 0;
    controller->ForcePoll(static_cast<std::int32_t>(
                              std::min<std::int64_t>(minutesLeft, std::numeric_limits<std::int32_t>::max())),
                          rate, pollInterval);
}

void ScheduleRSMHandler::performCleanUp() {
    const std::int64_t now = scheduling::gmtNow();
    const auto controller = ZephanRSMSingleTon::getInstance();
    if (controller == nullptr) {
        KRXLog(level::kError,
               "Failed to get RSMSingleton pointer in ScheduleRSMHandler::performCleanUp(). Returning... \n");
        return;
    }
    const std::lock_guard lock(commandLock_);
    if (!scheduleFile_.isOpen()) {
        return;
    }
    scheduleFile_.close();
    if (controller->getDelayedEndTime() < now) {
        platform::removeFile(filePath_);
    }
}

void ScheduleRSMHandler::dateToString(std::int64_t gmtClockValue, char* date, char* time) noexcept {
    if (date == nullptr || time == nullptr) {
        KRXLog(level::kForce, "Received NULL pointer in dateToString of ScheduleRSMHandler.");
        return;
    }
    const auto fields = scheduling::gmtFields(gmtClockValue);
    std::snprintf(date, kDateTextSize, "%d:%02d:%02d", fields.year, fields.month, fields.day);
    std::snprintf(time, kDateTextSize, "%02d:%02d:%02d", fields.hour, fields.minute, fields.second);
}
