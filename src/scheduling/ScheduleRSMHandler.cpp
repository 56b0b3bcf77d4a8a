#include "scheduling/ScheduleRSMHandler.h"

#include "controller/ZephanRSMSingleTon.h"
#include "platform/Console.h"
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
    if (loaded_ == Load::NoMemory) {
        KRXLog(level::kForce, "new Failed in ScheduleRSMHandler of ScheduleRSMHandler. \n");
    } else if (loaded_ == Load::NotReadable) {
        KRXLog(level::kForce, "\n Unable to read the schedule in file = %s", filePath_.c_str());
    } else if (loaded_ == Load::NotInFormat) {
        platform::echo(filePath_.c_str());
        platform::echo(" file is not in correct format.");
    }
}

bool ScheduleRSMHandler::isScheduleCurrent() const {
    const platform::Lock lock(lock_);
    return schedule_.isCurrent(scheduling::gmtNow());
}

RsmOrder ScheduleRSMHandler::orderOf(const scheduling::Schedule& schedule, std::int64_t now) {
    const std::int32_t rate = platform::readNumber(schedule.pollingRateText);
    if (schedule.startTimeValue > now) {
        return {rate, platform::readNumber(schedule.gracePeriodText), schedule.startTimeValue,
                schedule.endTimeValue};
    }
    const std::int64_t minutesLeft = (schedule.endTimeValue - now) / scheduling::kSecondsPerMinute;
    return {rate, static_cast<std::int32_t>(
                      std::min<std::int64_t>(minutesLeft, std::numeric_limits<std::int32_t>::max()))};
}

void ScheduleRSMHandler::scheduleRSM(ZephanRSMSingleTon& controller) const {
    RsmOrder order;
    {
        // As one step, as orders are: the one that comes last is the last everywhere.
        const platform::Lock lock(lock_);
        order = orderOf(schedule_, scheduling::gmtNow());
        if (order.pollingRate >= 1) {
            controller.take(order);
        }
    }
    if (order.pollingRate < 1) {
        KRXLog(
            level::kError,
            "Failed to schedule RSM ScheduleRSMHandler::scheduleRSM(). As polling rate is not greater than 0. ... \n");
        return;
    }
    controller.carryOut(order);
}

void ScheduleRSMHandler::keepRejected(scheduling::Schedule rejected) {
    const platform::Lock lock(lock_);
    rejected.startTimeValue = schedule_.startTimeValue;
    rejected.endTimeValue = schedule_.endTimeValue;
    schedule_ = rejected;
}

bool ScheduleRSMHandler::write(const scheduling::Schedule::Record& record) {
    if (!scheduleFile_.isOpen() || !scheduleFile_.overwriteStart(record.data())) {
        return false;
    }
    hasUnreadRecord_ = false;
    const bool synced = scheduleFile_.sync();
    platform::syncName(place_);
    return synced;
}

void ScheduleRSMHandler::store(const scheduling::Schedule& schedule, const RsmOrder* order,
                               ZephanRSMSingleTon& controller) {
    const scheduling::Schedule::Record record = schedule.record();
    bool written = false;
    {
        const platform::Lock lock(lock_);
        written = scheduleFile_.isOpen();
    }
    if (written) {
        KRXLog(level::kForce, "\n GOING TO PUT IN A FILE = %s", record.data());
    }
    {
        // As one step: of two orders the last one is the last everywhere, and the clean-up sees all of one or nothing.
        const platform::Lock lock(lock_);
        schedule_ = schedule;
        written = write(record);
        if (order != nullptr) {
            controller.take(*order);
        }
    }
    if (!written) {
        KRXLog(level::kForce, "\n Unable to put the schedule in file = %s", filePath_.c_str());
    }
}

void ScheduleRSMHandler::performCleanUp(const ZephanRSMSingleTon& controller) {
    const platform::Lock lock(lock_);
    if (!scheduleFile_.isOpen()) {
        return;
    }
    scheduleFile_.close();
    if (controller.getDelayedEndTime() < scheduling::gmtNow() && !hasUnreadRecord_) {
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
