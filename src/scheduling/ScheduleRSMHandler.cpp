#include "scheduling/ScheduleRSMHandler.h"

#include "controller/ZephanRSMSingleTon.h"
#include "platform/Console.h"
#include "platform/Lock.h"
#include "platform/Number.h"
#include "platform/agent/Logging.h"
#include "scheduling/GmtClock.h"

#include <algorithm>
#include <cstdio>
#include <limits>
#include <new>
#include <optional>

namespace {

constexpr std::size_t kLargestContents = std::size_t{1} << 20U;  // of a file that anybody may have put there
constexpr std::size_t kDateTextSize = 40;

}  // namespace

ScheduleRSMHandler::ScheduleRSMHandler(const char* path)
    : filePath_(path), place_(platform::absolutePath(filePath_)) {
    scheduleFile_ = platform::File::open(place_, platform::OpenMode::Create);
    if (scheduleFile_.isOpen()) {
        loaded_ = load();
    }
}

ScheduleRSMHandler::Load ScheduleRSMHandler::load() {
    try {
        const std::optional<std::string> contents = scheduleFile_.readWhole(kLargestContents);
        hasUnreadRecord_ = !contents;
        if (!contents) {
            return Load::NotReadable;
        }
        if (scheduling::Schedule::isRecord(*contents)) {
            hasUnreadRecord_ = !schedule_.readRecord(*contents);
        } else if (!contents->empty()) {
            return Load::NotInFormat;
        }
        return Load::Done;
    } catch (const std::bad_alloc&) {
        hasUnreadRecord_ = true;
        return Load::NoMemory;
    }
}

void ScheduleRSMHandler::reportLoad() const {
    switch (loaded_) {
        case Load::Done:
            break;
        case Load::NoMemory:
            KRXLog(level::kForce, "new Failed in ScheduleRSMHandler of ScheduleRSMHandler. \n");
            break;
        case Load::NotReadable:
            KRXLog(level::kForce, "\n Unable to read the schedule in file = %s", filePath_.c_str());
            break;
        case Load::NotInFormat:
            platform::echo(filePath_.c_str());
            platform::echo(" file is not in correct format.");
            break;
    }
}

scheduling::Schedule ScheduleRSMHandler::schedule() const {
    const platform::Lock lock(lock_);
    return schedule_;
}

bool ScheduleRSMHandler::isScheduleCurrent() const {
    return schedule().isCurrent(scheduling::gmtNow());
}

void ScheduleRSMHandler::scheduleRSM(ZephanRSMSingleTon& controller) const {
    handOver(schedule(), scheduling::gmtNow(), controller);
}

void ScheduleRSMHandler::handOver(const scheduling::Schedule& schedule, std::int64_t now,
                                  ZephanRSMSingleTon& controller) {
    const std::int32_t rate = platform::readNumber(schedule.pollingRateText);
    if (rate < 1) {
        KRXLog(
            level::kError,
            "Failed to schedule RSM ScheduleRSMHandler::scheduleRSM(). As polling rate is not greater than 0. ... \n");
        return;
    }
    if (schedule.startTimeValue > now) {
        controller.scheduleDelayedProfile(rate, schedule.startTimeValue, schedule.endTimeValue,
                                          platform::readNumber(schedule.gracePeriodText));
        return;
    }
    const std::int64_t minutesLeft = (schedule.endTimeValue - now) / scheduling::kSecondsPerMinute;
    std::uint32_t pollInterval = 0;
    controller.ForcePoll(static_cast<std::int32_t>(
                             std::min<std::int64_t>(minutesLeft, std::numeric_limits<std::int32_t>::max())),
                         rate, pollInterval);
}

bool ScheduleRSMHandler::isFileOpen() const {
    const platform::Lock lock(lock_);
    return scheduleFile_.isOpen();
}

void ScheduleRSMHandler::keep(const scheduling::Schedule& schedule) {
    const platform::Lock lock(lock_);
    schedule_ = schedule;
}

bool ScheduleRSMHandler::keep(const scheduling::Schedule& schedule,
                              const scheduling::Schedule::Record& record) {
    const platform::Lock lock(lock_);
    schedule_ = schedule;
    if (!scheduleFile_.isOpen() || !scheduleFile_.overwriteStart(record.data())) {
        return false;
    }
    hasUnreadRecord_ = false;
    return scheduleFile_.sync();
}

void ScheduleRSMHandler::store(const scheduling::Schedule& schedule) {
    const scheduling::Schedule::Record record = schedule.record();
    if (isFileOpen()) {
        KRXLog(level::kForce, "\n GOING TO PUT IN A FILE = %s", record.data());
    }
    if (keep(schedule, record)) {
        platform::syncName(place_);
    } else {
        KRXLog(level::kForce, "\n Unable to put the schedule in file = %s", filePath_.c_str());
    }
}

void ScheduleRSMHandler::performCleanUp(const ZephanRSMSingleTon& controller) {
    const bool isOver = controller.getDelayedEndTime() < scheduling::gmtNow();
    const platform::Lock lock(lock_);
    if (!scheduleFile_.isOpen()) {
        return;
    }
    scheduleFile_.close();
    if (isOver && !hasUnreadRecord_) {
        platform::removeFile(place_);
    }
}

void ScheduleRSMHandler::dateToString(std::int64_t gmtClockValue, char* date, char* time) {
    if (date == nullptr || time == nullptr) {
        KRXLog(level::kForce, "Received NULL pointer in dateToString of ScheduleRSMHandler.");
        return;
    }
    const auto fields = scheduling::gmtFields(gmtClockValue);
    std::snprintf(date, kDateTextSize, "%d:%02d:%02d", fields.year, fields.month, fields.day);
    std::snprintf(time, kDateTextSize, "%02d:%02d:%02d", fields.hour, fields.minute, fields.second);
}
