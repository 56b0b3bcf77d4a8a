// The resume state file: one small record that carries a running force polling over a restart of the agent.
#include "config/XMLConfigData.h"
#include "controller/ZephanRSMSingleTon.h"
#include "platform/Clock.h"
#include "platform/File.h"
#include "platform/Number.h"
#include "platform/agent/Logging.h"
#include "scheduling/GmtClock.h"

#include <array>
#include <cstdio>
#include <exception>
#include <string_view>

namespace {

constexpr char kRootTag[] = "<ResumeRSM>";
constexpr char kClassName[] = "ZephanRSMSingleTon";
constexpr double kFirstTwoDigitGrace = 10.0;  // minutes; below, a "0" is put before the number
constexpr std::size_t kRecordSize = 1000;
constexpr std::size_t kReadSize = 1024;
constexpr int kSecondsPerMinute = 60;

}  // namespace

void ZephanRSMSingleTon::saveRSMState() noexcept {
    const XMLConfigData* const configuration = XMLConfigData::instance();
    if (configuration == nullptr) {
        KRXLog(250, "Unable to save RSM state.\n");
        return;
    }
    platform::File file;
    try {
        resumeFilePath_ = configuration->getRSMResumeStatusFile();
        resumeSavedAt_ = platform::now();
        file = platform::File::open(resumeFilePath_, platform::OpenMode::Create);
    } catch (const std::exception&) {
        // No memory for the path: reported below as a file that cannot be opened.
    }
    if (!file.isOpen()) {
        KRXLog(250, "Unable to save RSM state. Unable to retrive file. \n");
        return;
    }
    const State current = state();
    const auto fields = scheduling::gmtFields(resumeSavedAt_);
    std::snprintf(resumeDate_, sizeof resumeDate_, "%d:%02d:%02d", fields.year, fields.month, fields.day);
    std::snprintf(resumeTime_, sizeof resumeTime_, "%02d:%02d:%02d", fields.hour, fields.minute,
                  fields.second);
    std::snprintf(resumePollingRate_, sizeof resumePollingRate_, "%d", current.pollingRate);
    std::snprintf(resumeGracePeriod_, sizeof resumeGracePeriod_, "%s%d",
                  current.gracePeriod < kFirstTwoDigitGrace ? "0" : "", current.wholeMinutes());

    std::array<char, kRecordSize> record{};
    const int length = std::snprintf(
        record.data(), record.size(),
        "%s<RSMStartDate>%s</RSMStartDate><RSMStartTime>%s</RSMStartTime><PollingRate>%s</PollingRate>"
        "<GracePeriod>%s</GracePeriod></ResumeRSM>",
        kRootTag, resumeDate_, resumeTime_, resumePollingRate_, resumeGracePeriod_);
    // Not emptied first: a kill between the two would lose the record that was there.
    if (file.overwriteStart({record.data(), static_cast<std::size_t>(length)})) {
        file.truncate(length);
        file.sync();
        platform::syncName(resumeFilePath_);
    }
}

bool ZephanRSMSingleTon::readResumeState(const std::string& path) {
    resumeFilePath_ = path;
    std::array<char, kReadSize> text{};
    {
        const platform::File file = platform::File::open(path, platform::OpenMode::ReadWrite);
        // One byte stays for the terminator; a longer file is cut.
        if (!file.isOpen() || file.readStart(text.data(), text.size() - 1) == 0) {
            return false;
        }
    }
    if (scheduling::getTagEndIndex(text.data(), kRootTag) != static_cast<std::int32_t>(sizeof kRootTag - 1)) {
        KRXLog(250, "\n%s file is not in correct format.", path.c_str());
        return false;
    }
    scheduling::readTaggedValue(text.data(), "RSMStartDate", resumeDate_, kClassName);
    scheduling::readTaggedValue(text.data(), "RSMStartTime", resumeTime_, kClassName);
    scheduling::readTaggedValue(text.data(), "PollingRate", resumePollingRate_, kClassName);
    scheduling::readTaggedValue(text.data(), "GracePeriod", resumeGracePeriod_, kClassName);
    resumeSavedAt_ = scheduling::stringToTime(resumeDate_, resumeTime_);
    const std::int64_t elapsed = scheduling::gmtNow() - resumeSavedAt_;
    if (std::int64_t{platform::readNumber(resumeGracePeriod_)} * kSecondsPerMinute <= elapsed) {
        platform::removeFile(path);
        return false;
    }
    return true;
}
