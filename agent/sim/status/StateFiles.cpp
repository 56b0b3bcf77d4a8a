#include "sim/status/StateFiles.h"

#include "controller/ZephanRSMSingleTon.h"
#include "platform/File.h"
#include "platform/Number.h"
#include "scheduling/GmtClock.h"
#include "scheduling/Schedule.h"
#include "scheduling/TaggedText.h"
#include "sim/status/Moment.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <string_view>

namespace sim {

namespace {

constexpr char kReader[] = "StateFiles";
constexpr std::size_t kMostResume = 1023;  // bytes that the module reads
constexpr std::size_t kMostSchedule = std::size_t{1} << 20U;

/// The file's contents, as far as the module reads them; none when it cannot be opened.
std::optional<std::string> contentsOf(const std::string& path, std::size_t most) {
    if (path.empty()) {
        return std::nullopt;
    }
    const platform::File file = platform::File::open(path, platform::OpenMode::Read);
    if (!file.isOpen()) {
        return std::nullopt;
    }
    std::string contents(most, '\0');
    contents.resize(file.readStart(contents.data(), contents.size()));
    return contents;
}

StateFiles::Found foundIn(const std::optional<std::string>& contents, std::string_view rootTag) {
    if (!contents || contents->empty()) {
        return StateFiles::Found::nothing;
    }
    return contents->starts_with(rootTag) ? StateFiles::Found::record : StateFiles::Found::foreign;
}

/// A value of the record, as the module reads it.
class Value final {
  public:
    Value(const std::string& record, const char* element) {
        scheduling::readTaggedValue(record.c_str(), element, text_, kReader);
    }
    const char* text() const { return text_; }
    int number() const { return platform::readNumber(text_); }

  private:
    char text_[scheduling::kValueSize] = "";
};

std::int64_t momentOf(const Value& date, const Value& time) {
    return scheduling::stringToTime(date.text(), time.text());
}

int wholeMinutes(std::int64_t seconds) {
    return static_cast<int>(std::clamp<std::int64_t>(seconds / scheduling::kSecondsPerMinute, 0,
                                                     std::numeric_limits<int>::max()));
}

StateFiles::Resume readResume(const std::string& path, std::int64_t now) {
    StateFiles::Resume resume;
    resume.path = path;
    const auto contents = contentsOf(path, kMostResume);
    resume.found = foundIn(contents, ZephanRSMSingleTon::kResumeRootTag);
    if (resume.found != StateFiles::Found::record) {
        return resume;
    }
    resume.canBeWritten = platform::File::open(path, platform::OpenMode::ReadWrite).isOpen();
    resume.began = momentOf({*contents, "RSMStartDate"}, {*contents, "RSMStartTime"});
    resume.rate = Value(*contents, "PollingRate").number();
    resume.minutes = Value(*contents, "GracePeriod").number();
    const std::int64_t left = resume.minutes * scheduling::kSecondsPerMinute - (now - resume.began);
    resume.minutesLeft = wholeMinutes(left);
    resume.isOpen = left > 0 && resume.rate > 0 && resume.canBeWritten;
    return resume;
}

StateFiles::Schedule readSchedule(const std::string& path, std::int64_t now) {
    StateFiles::Schedule schedule;
    schedule.path = path;
    const auto contents = contentsOf(path, kMostSchedule);
    schedule.found = foundIn(contents, scheduling::Schedule::kRootTag);
    if (schedule.found != StateFiles::Found::record) {
        return schedule;
    }
    schedule.start = momentOf({*contents, "RSMStartDate"}, {*contents, "RSMStartTime"});
    schedule.end = momentOf({*contents, "RSMEndDate"}, {*contents, "RSMEndTime"});
    schedule.rate = Value(*contents, "PollingRate").number();
    schedule.minutes = Value(*contents, "GracePeriod").number();
    schedule.isCurrent = schedule.end > now;
    schedule.minutesLeft = wholeMinutes(schedule.end - now);
    return schedule;
}

std::string minutesText(int minutes) {
    return std::to_string(minutes) + (minutes == 1 ? " minute" : " minutes");
}

std::string paceText(int minutes, int rate) {
    return minutesText(minutes) + " at one poll every " + std::to_string(rate) + " s";
}

}  // namespace

StateFiles readStateFiles(const std::string& resumePath, const std::string& schedulePath, std::int64_t now) {
    return {readResume(resumePath, now), readSchedule(schedulePath, now)};
}

StateFiles::Start StateFiles::start(std::int64_t now) const {
    // A schedule is handed over after RSM was resumed; one that has begun takes its place.
    if (schedule.isCurrent && schedule.rate > 0 && schedule.start <= now) {
        return Start::joinsSchedule;
    }
    if (resume.isOpen) {
        return Start::resumes;
    }
    return schedule.isCurrent && schedule.rate > 0 ? Start::waits : Start::nothing;
}

std::string StateFiles::startText(std::int64_t now) const {
    const std::string later = schedule.isCurrent && schedule.rate > 0 && schedule.start > now
                                  ? ", and wait for the schedule of " + gmtText(schedule.start)
                                  : "";
    switch (start(now)) {
        case Start::resumes:
            // Without a whole minute, or without a poll in a minute, RSM is over before its first poll.
            return "A start now would resume RSM for " + paceText(resume.minutesLeft, resume.rate) + later +
                   ".";
        case Start::joinsSchedule:
            return "A start now would go on with the schedule of " + gmtText(schedule.start) + " for " +
                   paceText(schedule.minutesLeft, schedule.rate) + ".";
        case Start::waits:
            return "A start now would wait for the schedule of " + gmtText(schedule.start) + ": " +
                   paceText(schedule.minutes, schedule.rate) + ".";
        case Start::nothing:
            break;
    }
    return "A start now would not bring RSM back.";
}

std::string StateFiles::resumeText() const {
    switch (resume.found) {
        case Found::nothing:
            return resume.path.empty() ? "no file is known" : "no record in " + resume.path;
        case Found::foreign:
            return resume.path + " holds no record; a start leaves it alone";
        case Found::record:
            break;
    }
    return "RSM of " + paceText(resume.minutes, resume.rate) + ", begun " + momentText(resume.began) +
           (resume.isOpen          ? ", " + minutesText(resume.minutesLeft) + " left"
            : !resume.canBeWritten ? ", in a file that cannot be written: a start leaves it alone"
            : resume.rate < 1      ? ": cannot be followed at that rate"
                                   : ", over");
}

std::string StateFiles::scheduleText(std::int64_t now) const {
    switch (schedule.found) {
        case Found::nothing:
            return schedule.path.empty() ? "no file is known" : "none in " + schedule.path;
        case Found::foreign:
            return schedule.path + " holds no record";
        case Found::record:
            break;
    }
    const std::string order = momentText(schedule.start) + ", " + paceText(schedule.minutes, schedule.rate);
    if (!schedule.isCurrent) {
        return "none; the last one, of " + order + ", is over";
    }
    if (schedule.rate < 1) {
        return order + ": cannot be followed at that rate";
    }
    return schedule.start > now ? order : order + ", going on until " + momentText(schedule.end);
}

}  // namespace sim
