// The resume state file: one small record that carries a running force polling over a restart of the agent.
#include "config/XMLConfigData.h"
#include "controller/ZephanRSMSingleTon.h"
#include "platform/Clock.h"
#include "platform/File.h"
#include "platform/Lock.h"
#include "platform/Number.h"
#include "platform/agent/Logging.h"
#include "scheduling/GmtClock.h"
#include "scheduling/TaggedText.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <exception>
#include <limits>

namespace {

constexpr char kRootTag[] = "<ResumeRSM>";
constexpr char kClassName[] = "ZephanRSMSingleTon";
constexpr double kFirstTwoDigitGrace = 10.0;  // minutes; below, a "0" is put before the number
constexpr std::size_t kRecordSize = 1000;
constexpr std::size_t kReadSize = 1024;

using scheduling::kSecondsPerMinute;
using Value = char[scheduling::kValueSize];

}  // namespace

const char* ZephanRSMSingleTon::saveRSMState() {
    const auto configuration = XMLConfigData::instance();
    if (configuration == nullptr) {
        return "Unable to save RSM state.\n";
    }
    const RsmState current = state();
    const auto saved = scheduling::gmtFields(platform::now());
    std::array<char, kRecordSize> record{};
    const int length = std::snprintf(
        record.data(), record.size(),
        "<ResumeRSM><RSMStartDate>%d:%02d:%02d</RSMStartDate><RSMStartTime>%02d:%02d:%02d</RSMStartTime><PollingRate>%d</PollingRate><GracePeriod>%s%d</GracePeriod></ResumeRSM>",
        saved.year, saved.month, saved.day, saved.hour, saved.minute, saved.second, current.pollingRate,
        current.gracePeriod < kFirstTwoDigitGrace ? "0" : "", current.wholeMinutes());
    bool opened = false;
    try {
        const platform::Lock lock(resumeFileLock_);
        setResumeFilePath(configuration->getRSMResumeStatusFile());
        platform::File file = platform::File::open(resumePlace_, platform::OpenMode::Create);
        opened = file.isOpen();
        // Not emptied first: a kill between the two would lose the record that was there.
        if (opened && file.overwriteStart({record.data(), static_cast<std::size_t>(length)})) {
            file.truncate(length);
            file.sync();
            platform::syncName(resumePlace_);
        }
    } catch (const std::exception&) {
        // No memory for the path: as a file that cannot be opened.
    }
    return opened ? nullptr : "Unable to save RSM state. Unable to retrive file. \n";
}

std::optional<ZephanRSMSingleTon::SavedRsm> ZephanRSMSingleTon::readResumeState(const std::string& path) {
    std::array<char, kReadSize> text{};
    {
        const platform::Lock lock(resumeFileLock_);
        setResumeFilePath(path);
        const platform::File file = platform::File::open(resumePlace_, platform::OpenMode::ReadWrite);
        // One byte stays for the terminator; a longer file is cut.
        if (!file.isOpen() || file.readStart(text.data(), text.size() - 1) == 0) {
            return std::nullopt;
        }
    }
    if (scheduling::getTagEndIndex(text.data(), kRootTag) != static_cast<std::int32_t>(sizeof kRootTag - 1)) {
        KRXLog(level::kForce, "\n%s file is not in correct format.", path.c_str());
        return std::nullopt;
    }
    Value date{};
    Value time{};
    Value rate{};
    Value grace{};
    const auto read = [&text](const char* element, Value& value) {
        return scheduling::readTaggedValue(text.data(), element, value, kClassName);
    };
    if (!read("RSMStartDate", date) || !read("RSMStartTime", time) || !read("PollingRate", rate) ||
        !read("GracePeriod", grace)) {
        return std::nullopt;  // memory ran out: the record is kept for a start that can read it
    }
    const SavedRsm saved{scheduling::stringToTime(date, time), platform::readNumber(rate),
                         platform::readNumber(grace)};
    if (saved.gracePeriod * kSecondsPerMinute <= scheduling::gmtNow() - saved.savedAt) {
        const platform::Lock lock(resumeFileLock_);
        // Not when it was saved anew since it was read.
        std::array<char, kReadSize> present{};
        const platform::File file = platform::File::open(resumePlace_, platform::OpenMode::Read);
        if (file.isOpen() && file.readStart(present.data(), present.size() - 1) != 0 && present == text) {
            platform::removeFile(resumePlace_);
        }
        return std::nullopt;
    }
    return saved;
}

void ZephanRSMSingleTon::resumeSavedRSM(const SavedRsm& saved) {
    // A clock set back, or a damaged date, must not make the period longer than it was.
    const std::int64_t elapsed = std::max<std::int64_t>(0, scheduling::gmtNow() - saved.savedAt);
    const std::int64_t left = (saved.gracePeriod * kSecondsPerMinute - elapsed) / kSecondsPerMinute;
    using Limits = std::numeric_limits<std::int32_t>;
    std::uint32_t pollInterval = 0;
    ForcePoll(static_cast<std::int32_t>(std::clamp<std::int64_t>(left, Limits::min(), Limits::max())),
              saved.pollingRate, pollInterval);
}
