#include "scheduling/ScheduleRSMHandler.h"

#include "controller/ZephanRSMSingleTon.h"
#include "platform/Console.h"
#include "platform/agent/Logging.h"
#include "platform/portable/Number.h"
#include "records/GmtClock.h"

#include <algorithm>
#include <cstdio>
#include <limits>
#include <memory>
#include <new>
#include <optional>

namespace {

constexpr std::size_t kLargestContents = std::size_t{1} << 20U;  // of a file that anybody may have put there
constexpr std::size_t kDateTextSize = 40;

}  // namespace

ScheduleRSMHandler::ScheduleRSMHandler(const char* path) {
    setFilePath(path);
    trouble_ = scheduleFile_.open() ? load() : nullptr;
}

const char* ScheduleRSMHandler::load() {
    hasUnreadRecord_ = true;
    try {
        const std::optional<std::string> contents = scheduleFile_.file().readWhole(kLargestContents);
        if (!contents) {
            return "\n Unable to read the schedule in file = %s";
        }
        const bool isRecord = contents->starts_with(scheduling::Schedule::kRootTag);
        hasUnreadRecord_ = isRecord && !schedule_.readRecord(contents->c_str(), damaged_);
        if (damaged_ != nullptr) {
            return schedule_.isCurrent(records::gmtNow()) && platform::isPositive(schedule_.pollingRateText)
                       ? records::StateFile::kFollowed
                       : records::StateFile::kUseless;
        }
        return isRecord || contents->empty() ? nullptr : records::StateFile::kForeign;
    } catch (const std::bad_alloc&) {
        return "new Failed in ScheduleRSMHandler of ScheduleRSMHandler. \n";
    }
}

void ScheduleRSMHandler::reportLoad() const {
    if (trouble_ == records::StateFile::kForeign) {
        platform::echo(filePath_.c_str());
        platform::echo(" file is not in correct format.");
    }
    if (trouble_ != nullptr) {
        KRXLog(level::kForce, trouble_, filePath_.c_str(), damaged_);
    }
}

bool ScheduleRSMHandler::isScheduleCurrent() const {
    const platform::Lock lock(lock_);
    return schedule_.isCurrent(records::gmtNow());
}

RsmOrder ScheduleRSMHandler::orderOf(const scheduling::Schedule& schedule, std::int64_t now) {
    const std::int32_t rate = platform::readNumber(schedule.pollingRateText);
    if (schedule.startTimeValue > now) {
        return {rate, platform::readNumber(schedule.gracePeriodText), schedule.startTimeValue,
                schedule.endTimeValue};
    }
    const std::int64_t minutesLeft = (schedule.endTimeValue - now) / records::kSecondsPerMinute;
    return {rate, static_cast<std::int32_t>(
                      std::min<std::int64_t>(minutesLeft, std::numeric_limits<std::int32_t>::max()))};
}

void ScheduleRSMHandler::scheduleRSM(ZephanRSMSingleTon& controller) const {
    RsmOrder order;
    {
        // As one step, as orders are: the one that comes last is the last everywhere.
        const platform::Lock lock(lock_);
        order = orderOf(schedule_, records::gmtNow());
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

void ScheduleRSMHandler::store(const scheduling::Schedule& schedule, const RsmOrder* order,
                               ZephanRSMSingleTon& controller) {
    const scheduling::Schedule::Record record = schedule.record();
    bool isOpen = false;
    {
        const platform::Lock lock(lock_);
        isOpen = scheduleFile_.isOpen();
    }
    if (isOpen) {
        KRXLog(level::kForce, "\n GOING TO PUT IN A FILE = %s", record.data());
    }
    records::StateFile::Stored stored;
    {
        // As one step: of two orders the last one is the last everywhere, and the clean-up sees all of one or nothing.
        const platform::Lock lock(lock_);
        stored = scheduleFile_.store(record.data(), records::StateFile::Tail::Stays);
        hasUnreadRecord_ = hasUnreadRecord_ && !stored.done;
        schedule_ = schedule;
        if (order != nullptr) {
            controller.take(*order);
        }
    }
    const char* const path = filePath_.c_str();
    if (stored.notice.format != nullptr) {
        KRXLog(level::kForce, stored.notice.format, path, path, stored.notice.suffix.data());
    }
    if (!stored.done) {
        KRXLog(level::kForce, "\n Unable to put the schedule in file = %s", path);
    }
}

void ScheduleRSMHandler::performCleanUp(const ZephanRSMSingleTon& controller) {
    const platform::Lock lock(lock_);
    if (scheduleFile_.isOpen() && !hasUnreadRecord_ && controller.getDelayedEndTime() < records::gmtNow()) {
        scheduleFile_.remove(scheduling::Schedule::kRootTag);
    }
    scheduleFile_.close();
}

void ScheduleRSMHandler::dateToString(std::int64_t gmtClockValue, char* date, char* time) {
    if (date == nullptr || time == nullptr) {
        KRXLog(level::kForce, "Received NULL pointer in dateToString of ScheduleRSMHandler.");
        return;
    }
    const auto fields = records::gmtFields(gmtClockValue);
    std::snprintf(date, kDateTextSize, "%d:%02d:%02d", fields.year, fields.month, fields.day);
    std::snprintf(time, kDateTextSize, "%02d:%02d:%02d", fields.hour, fields.minute, fields.second);
}

bool ZephanRSMSingleTon::createScheduleHandler(const char* scheduleFilePath) {
    if (getScheduleHandler() != nullptr || scheduleFilePath == nullptr) {
        return false;
    }
    try {
        auto handler = std::make_shared<ScheduleRSMHandler>(scheduleFilePath);
        ScheduleRSMHandler* none = nullptr;
        if (!scheduleHandler_.compare_exchange_strong(none, handler.get())) {
            return false;
        }
        ownedScheduleHandler_ = std::move(handler);
        return true;
    } catch (const std::bad_alloc&) {
        return false;  // no handler: the callers report that
    }
}

void ZephanRSMSingleTon::closeSchedule() {
    if (ScheduleRSMHandler* const handler = getScheduleHandler()) {
        handler->close();
    }
}
