#include "logging/LogFileWriter.h"

#include "config/XMLConfigData.h"
#include "logging/LogRevision.h"
#include "platform/Clock.h"
#include "platform/Console.h"
#include "platform/ThreadEnd.h"
#include "platform/agent/Logging.h"
#include "platform/portable/NoDestructor.h"
#include "platform/portable/Number.h"
#include "platform/portable/Published.h"
#include "platform/portable/Role.h"
#include "platform/portable/ScopeGuard.h"

#include <cstdio>
#include <cstring>
#include <exception>
#include <utility>

namespace {

constexpr int kTmYearOrigin = 1900;
constexpr char kNullMessage[] = "Received NULL message for Logging.";
constexpr char kRenameFailed[] = "\n Error renaming file";
constexpr char kHeld[] =
    "\n Another program keeps the log file to itself. Entries are lost until it is free.";
constexpr int kMostCounters = 10'000;  // tried for one archive
constexpr std::size_t kConsoleLineSize = 64;

platform::NoDestructor<platform::Published<LogFileWriter>> published;

/// Of the thread that reports a failed rotation. Of several one has it; what the others report is told once a
/// second at the most.
platform::NoDestructor<platform::Role> reporter;

}  // namespace

std::shared_ptr<LogFileWriter> LogFileWriter::getInstance() {
    if (auto present = published->get()) {
        return present;
    }
    try {
        return published->publishFirst(std::shared_ptr<LogFileWriter>(new LogFileWriter));
    } catch (const std::exception&) {
        return nullptr;  // memory ran out: the file logger works without a writer
    }
}

void LogFileWriter::destroyInstance() noexcept {
    published->exchange(nullptr);
}

LogFileWriter::LogFileWriter() {
    if (const int error = mutex_.creationError(); error != 0) {
        std::array<char, kConsoleLineSize> line{};
        std::snprintf(line.data(), line.size(), "CreateMutex error: %d\n", error);
        platform::echo(line.data());
        return;
    }
    const LogRevision deletesOldFiles;
    takeConfiguration();
    if (configuration_ != nullptr) {
        file_.emplace(configuration_->getLogFilePath());
    }
}

void LogFileWriter::writeForce(const char* message) noexcept {
    writeWhenPassed(level::kForce, message);
}

void LogFileWriter::writeError(const char* message) noexcept {
    writeWhenPassed(level::kError, message);
}

void LogFileWriter::writeWarn(const char* message) noexcept {
    writeWhenPassed(level::kWarn, message);
}

void LogFileWriter::writeInfo(const char* message) noexcept {
    writeWhenPassed(level::kInfo, message);
}

void LogFileWriter::writeTrace(const char* message) noexcept {
    writeWhenPassed(level::kTrace, message);
}

Notices LogFileWriter::takeNotices() noexcept {
    const auto take = [](std::atomic<std::uint32_t>& count) { return count == 0 ? 0 : count.exchange(0); };
    return {take(failedRenames_), take(abandonedWaits_), take(failedReleases_), take(heldLogs_)};
}

void LogFileWriter::report(const Notices& notices) {
    for (std::uint32_t i = 0; i < notices.abandonedWaits; ++i) {
        platform::echo("\n The thread got ownership of an abandoned logging mutex.");
    }
    for (std::uint32_t i = 0; i < notices.failedRenames; ++i) {
        const bool takes = reporter->tryTake();
        const platform::ScopeGuard over([takes] { takes ? reporter->giveBack() : void(); });
        KRXLog(level::kForce, "%s", kRenameFailed);
    }
    for (std::uint32_t i = 0; i < notices.heldLogs; ++i) {
        KRXLog(level::kForce, "%s", kHeld);
    }
    for (std::uint32_t i = 0; i < notices.failedReleases; ++i) {
        platform::echo("\n error while releasing logging mutex.");
    }
}

void LogFileWriter::writeWhenPassed(std::int32_t messageLevel, const char* message) noexcept {
    // A further load counts from its next message on. Asking for the object itself each time would cost more.
    if (const std::uint64_t age = XMLConfigData::age(); age != configurationAge_) {
        configurationAge_ = age;
        takeConfiguration();
    }
    if (configuration_ != nullptr && file_ && configuration_->getLogLevel() <= messageLevel) {
        lockedWrite(message);
    }
}

void LogFileWriter::takeConfiguration() noexcept {
    if (auto present = XMLConfigData::instance()) {
        sizeLimit_ = platform::readNumber(present->getFileSize());
        configuration_ = std::move(present);
    }
}

void LogFileWriter::lockedWrite(const char* message) noexcept {
    const platform::KeepThread keep;
    switch (mutex_.wait()) {
        case platform::Mutex::Wait::Abandoned:
            ++abandonedWaits_;
            return;
        case platform::Mutex::Wait::Busy:
        case platform::Mutex::Wait::Failed:
            return;
        case platform::Mutex::Wait::Obtained:
            break;
    }
    try {
        writeEntry(message == nullptr ? kNullMessage : message);
    } catch (const std::exception&) {
        // Memory ran out while an archive name was made; the entry is lost, the next one tries again.
    }
    if (!mutex_.release()) {
        ++failedReleases_;
    }
}

void LogFileWriter::writeEntry(const char* message) {
    stampEntry();
    const std::int64_t size = file_->size();
    // The report of a failed rotation comes back as an entry, which would fail to rotate and be reported in turn,
    // without end.
    if (size >= sizeLimit_ && !reporter->isMine()) {
        rotate(message);
    } else {
        file_->append(entryOf(message, false));
    }
    if (const bool wasHeld = std::exchange(isHeld_, file_->isHeld()); isHeld_ && !wasHeld) {
        ++heldLogs_;
    }
}

void LogFileWriter::stampEntry() noexcept {
    const std::int64_t now = platform::now();
    if (now == entry_.second) {
        return;
    }
    entry_.second = now;
    const std::tm fields = platform::localFields(now);
    const int length =
        std::snprintf(entry_.text.data(), Entry::kLongestStamp,
                      "Date:%d-%d-%d Time:%d:%d:%d :: ", fields.tm_year + kTmYearOrigin, fields.tm_mon + 1,
                      fields.tm_mday, fields.tm_hour, fields.tm_min, fields.tm_sec);
    entry_.stampLength = static_cast<std::size_t>(length);
    file_->lookForDirectory();  // costs too much to be done for each entry
}

std::string_view LogFileWriter::entryOf(const char* message, bool lineEnd) noexcept {
    char* const text = entry_.text.data() + entry_.stampLength;
    std::size_t length = strnlen(message, kLongestMessage);
    std::memcpy(text, message, length);
    if (lineEnd) {
        text[length++] = '\n';
    }
    return {entry_.text.data(), entry_.stampLength + length};
}

void LogFileWriter::rotate(const char* message) {
    file_->beginRotation();
    const bool moved = moveToArchive();
    file_->endRotation(moved);
    file_->append(entryOf(message, true));
    // What keeps one rotation from being made keeps all that follow: a line for each entry would say no more.
    if (!moved && toldIn_ != entry_.second) {
        toldIn_ = entry_.second;
        ++failedRenames_;
    }
}

bool LogFileWriter::moveToArchive() {
    const std::tm fields = platform::localFields(platform::now());
    std::array<char, Entry::kLongestStamp> date{};
    std::snprintf(date.data(), date.size(), "%d_%d_%d_%d_%d_%d", fields.tm_year + kTmYearOrigin,
                  fields.tm_mon + 1, fields.tm_mday, fields.tm_hour, fields.tm_min, fields.tm_sec);
    const std::string plain = date.data();
    if (!file_->hasArchive(plain + ".xml")) {
        const platform::Renaming outcome = file_->moveToArchive(plain + ".xml");
        // An archive that could not be opened just now still exists, and must not be lost.
        if (outcome != platform::Renaming::NameTaken) {
            if (collisionFlag_) {
                collisionFlag_ = false;
                collisionCounter_ = 0;
            }
            return outcome == platform::Renaming::Done;
        }
    }
    // A name with a counter may be taken, too: after a restart within the second, or by another process.
    auto outcome = platform::Renaming::NameTaken;
    for (int tries = 0; tries < kMostCounters && outcome == platform::Renaming::NameTaken; ++tries) {
        ++collisionCounter_;
        collisionFlag_ = true;
        outcome = file_->moveToArchive(plain + std::to_string(collisionCounter_) + ".xml");
    }
    return outcome == platform::Renaming::Done;
}
