#include "status/StateFiles.h"

#include "common/FileText.h"
#include "config/Settings.h"
#include "controller/ZephanRSMSingleTon.h"
#include "platform/File.h"
#include "platform/portable/Number.h"
#include "records/GmtClock.h"
#include "scheduling/Schedule.h"
#include "status/Moment.h"

#include <algorithm>
#include <limits>
#include <string_view>

namespace status {

namespace {

using State = FoundFile::State;

constexpr std::size_t kMostResume = 1023;  // bytes that the module reads
constexpr std::size_t kMostSchedule = std::size_t{1} << 20U;

/// Takes the file's text into `contents`. A path may be empty.
FoundFile find(const std::string& path, std::size_t most, std::string& contents) {
    if (path.empty()) {
        return {};
    }
    tools::FileText file = tools::readFile(path, most);
    if (!file.text) {
        return {path, file.isMissing ? State::missing : State::unreadable, file.reason};
    }
    contents = std::move(*file.text);
    return {path, contents.empty() ? State::empty : State::sound, {}};
}

/// Whether there is a record, which `read` takes values of.
template <typename Record>
bool takeRecord(FoundFile& file, const std::string& contents, std::string_view rootTag, Record& record) {
    if (file.state != State::sound) {
        return false;
    }
    if (!contents.starts_with(rootTag)) {
        file.state = State::foreign;
        return false;
    }
    const char* damaged = nullptr;
    record.readRecord(contents.c_str(), damaged);
    if (damaged != nullptr) {
        file.state = State::damaged;
        file.reason = std::string("its ") + damaged + " is of no use";
    }
    return true;
}

int wholeMinutes(std::int64_t seconds) {
    return static_cast<int>(
        std::clamp<std::int64_t>(seconds / records::kSecondsPerMinute, 0, std::numeric_limits<int>::max()));
}

StateFiles::Resume readResume(const std::string& path, std::int64_t now) {
    std::string contents;
    StateFiles::Resume resume{find(path, kMostResume, contents)};
    ZephanRSMSingleTon::SavedRsm saved;
    if (takeRecord(resume, contents, ZephanRSMSingleTon::kResumeRootTag, saved)) {
        resume.canBeWritten = platform::File::open(path, platform::OpenMode::ReadWrite).isOpen();
        resume.began = saved.savedAt;
        resume.rate = saved.pollingRate;
        resume.minutes = saved.gracePeriod;
        resume.minutesLeft = saved.minutesLeft(now);
        resume.isOpen = !saved.isOver(now) && resume.canBeWritten;
    }
    return resume;
}

StateFiles::Schedule readSchedule(const std::string& path, std::int64_t now) {
    std::string contents;
    StateFiles::Schedule schedule{find(path, kMostSchedule, contents)};
    scheduling::Schedule stored;
    if (takeRecord(schedule, contents, scheduling::Schedule::kRootTag, stored)) {
        schedule.start = stored.startTimeValue;
        schedule.end = stored.endTimeValue;
        schedule.rate = platform::readNumber(stored.pollingRateText);
        schedule.minutes = platform::readNumber(stored.gracePeriodText);
        schedule.isCurrent = stored.isCurrent(now);
        schedule.minutesLeft = wholeMinutes(schedule.end - now);
    }
    return schedule;
}

std::string minutesText(std::int64_t minutes) {
    return std::to_string(minutes) + (minutes == 1 ? " minute" : " minutes");
}

/// What is left of a period that a start takes up again.
std::string leftText(std::int64_t minutes, std::int64_t rate) {
    return minutes > 0 ? paceText(minutes, rate) : "less than a minute, too short for a poll";
}

}  // namespace

std::string paceText(std::int64_t minutes, std::int64_t rate) {
    return minutesText(minutes) + " at one poll every " + std::to_string(rate) + " s";
}

StateFiles readStateFiles(const std::string& resumePath, const std::string& schedulePath, std::int64_t now) {
    return {readResume(resumePath, now), readSchedule(schedulePath, now), {}, {}};
}

StateFiles readConfiguredFiles(const std::string& configurationPath, const std::string& schedulePath,
                               std::int64_t now) {
    std::string contents;
    FoundFile configuration = find(configurationPath, config::Document::kLargest + 1, contents);
    config::Settings settings;
    if (configuration.state == State::sound || configuration.state == State::empty) {
        const config::Document document = config::readDocument(std::move(contents));
        if (document.refusal) {
            configuration.state = State::damaged;
            configuration.reason = document.refusal->text();
        } else {
            configuration.state = State::sound;
            settings = config::takeSettings(document).settings;
        }
    }
    StateFiles files = readStateFiles(settings.resumeStatusFile, schedulePath, now);
    if (configuration.state == State::sound) {
        files.logPath = std::move(settings.logFilePath);
    }
    files.configuration = std::move(configuration);
    return files;
}

StateFiles::Start StateFiles::start(std::int64_t now) const {
    if (!isConfigured() || schedule.state == State::unreadable) {
        return Start::unknown;
    }
    // A schedule is handed over after RSM was resumed; one that has begun takes its place.
    if (schedule.isCurrent && schedule.rate > 0 && schedule.start <= now) {
        return Start::joinsSchedule;
    }
    if (resume.state == State::unreadable) {
        return Start::unknown;
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
            return "A start now would resume RSM for " + leftText(resume.minutesLeft, resume.rate) + later +
                   ".";
        case Start::joinsSchedule:
            return "A start now would go on with the schedule of " + gmtText(schedule.start) + " for " +
                   leftText(schedule.minutesLeft, schedule.rate) + ".";
        case Start::waits:
            return "A start now would wait for the schedule of " + gmtText(schedule.start) + ": " +
                   paceText(schedule.minutes, schedule.rate) + ".";
        case Start::unknown:
            return "What a start now would do cannot be told: " +
                   (!isConfigured()                       ? configuration.problem()
                    : schedule.state == State::unreadable ? schedule.problem()
                                                          : resume.problem()) +
                   ".";
        case Start::nothing:
            break;
    }
    return "A start now would not bring RSM back.";
}

std::string FoundFile::problem() const {
    switch (state) {
        case State::missing:
            return path + " is missing";
        case State::empty:
            return path + " is empty";
        case State::unreadable:
            return path + " cannot be read: " + reason;
        case State::foreign:
            return path + " is damaged: it holds no record";
        case State::damaged:
            return path + " is damaged: " + reason;
        case State::notNamed:
        case State::sound:
            break;
    }
    return "no file is known";
}

std::string StateFiles::resumeText() const {
    if (!resume.isRecord()) {
        return resume.problem() + (resume.state == State::foreign ? "; a start leaves it alone" : "");
    }
    return "RSM of " + paceText(resume.minutes, resume.rate) + ", begun " + momentText(resume.began) +
           (resume.isOpen          ? ", " + minutesText(resume.minutesLeft) + " left"
            : !resume.canBeWritten ? ", in a file that cannot be written: a start leaves it alone"
            : resume.rate < 1      ? ": cannot be followed at that rate"
                                   : ", over") +
           (resume.isFaulty() ? "; " + resume.problem() : "");
}

std::string StateFiles::scheduleText(std::int64_t now) const {
    if (!schedule.isRecord()) {
        return schedule.state == State::notNamed ? schedule.problem() : "none: " + schedule.problem();
    }
    const std::string order = momentText(schedule.start) + ", " + paceText(schedule.minutes, schedule.rate);
    return (!schedule.isCurrent    ? "none; the last one, of " + order + ", is over"
            : schedule.rate < 1    ? order + ": cannot be followed at that rate"
            : schedule.start > now ? order
                                   : order + ", going on until " + momentText(schedule.end)) +
           (schedule.isFaulty() ? "; " + schedule.problem() : "");
}

}  // namespace status
