// The resume state file: one small record that carries a running force polling over a restart of the agent.
#include "config/XMLConfigData.h"
#include "controller/ZephanRSMSingleTon.h"
#include "platform/Clock.h"
#include "platform/File.h"
#include "platform/agent/Logging.h"
#include "platform/portable/Lock.h"
#include "records/GmtClock.h"

#include <array>
#include <cstdio>
#include <exception>
#include <string_view>
#include <utility>

namespace {

constexpr double kFirstTwoDigitGrace = 10.0;  // minutes; below, a "0" is put before the number
constexpr std::size_t kRecordSize = 1000;
constexpr std::size_t kReadSize = 1024;

}  // namespace

records::StateFile::Notice ZephanRSMSingleTon::saveRSMState() {
    const auto configuration = XMLConfigData::instance();
    if (configuration == nullptr) {
        return {"Unable to save RSM state.\n"};
    }
    const RsmState current = state();
    const auto saved = records::gmtFields(platform::now());
    std::array<char, kRecordSize> record{};
    std::snprintf(
        record.data(), record.size(),
        "<ResumeRSM><RSMStartDate>%d:%02d:%02d</RSMStartDate><RSMStartTime>%02d:%02d:%02d</RSMStartTime><PollingRate>%d</PollingRate><GracePeriod>%s%d</GracePeriod></ResumeRSM>",
        saved.year, saved.month, saved.day, saved.hour, saved.minute, saved.second, current.pollingRate,
        current.gracePeriod < kFirstTwoDigitGrace ? "0" : "", current.wholeMinutes());
    try {
        const platform::Lock lock(resumeFileLock_);
        resumeFile_.setPath(configuration->getRSMResumeStatusFile());
        if (resumeFile_.open()) {
            std::string path = resumeFile_.path();
            auto notice = resumeFile_.store(record.data(), records::StateFile::Tail::Goes).notice;
            resumeFile_.close();
            notice.path = std::move(path);
            return notice;
        }
    } catch (const std::exception&) {
        // No memory for the path: as a file that cannot be opened.
    }
    return {"Unable to save RSM state. Unable to retrive file. \n"};
}

std::optional<ZephanRSMSingleTon::SavedRsm> ZephanRSMSingleTon::readResumeState(const std::string& path) {
    std::array<char, kReadSize> text{};
    {
        const platform::Lock lock(resumeFileLock_);
        resumeFile_.setPath(path);
        const platform::File file = platform::File::open(resumeFile_.place(), platform::OpenMode::ReadWrite);
        // One byte stays for the terminator; a longer file is cut.
        if (!file.isOpen() || file.readStart(text.data(), text.size() - 1) == 0) {
            return std::nullopt;
        }
    }
    if (!std::string_view(text.data()).starts_with(kResumeRootTag)) {
        KRXLog(level::kForce, "\n%s file is not in correct format.", path.c_str());
        KRXLog(level::kForce, records::StateFile::kForeign, path.c_str());
        return std::nullopt;
    }
    SavedRsm saved;
    const char* damaged = nullptr;
    if (!saved.readRecord(text.data(), damaged)) {
        return std::nullopt;  // memory ran out: the record is kept for a start that can read it
    }
    const bool over = saved.isOver(records::gmtNow());
    if (damaged != nullptr) {
        using records::StateFile;
        KRXLog(level::kForce, over ? StateFile::kUseless : StateFile::kFollowed, path.c_str(), damaged);
    }
    if (over) {
        const platform::Lock lock(resumeFileLock_);
        resumeFile_.remove(text.data());  // not when it was saved anew since it was read
        return std::nullopt;
    }
    return saved;
}

void ZephanRSMSingleTon::resumeSavedRSM(const SavedRsm& saved) {
    std::uint32_t pollInterval = 0;
    ForcePoll(saved.minutesLeft(records::gmtNow()), saved.pollingRate, pollInterval);
}
