#include "logging/LogFileWriter.h"

#include "config/XMLConfigData.h"
#include "logging/LogRevision.h"
#include "platform/Clock.h"
#include "platform/Console.h"
#include "platform/Number.h"
#include "platform/ThreadEnd.h"
#include "platform/agent/Logging.h"

#include <cstdio>
#include <cstring>
#include <exception>

namespace {

constexpr int kTmYearOrigin = 1900;
constexpr char kNullMessage[] = "Received NULL message for Logging.";
constexpr char kRenameErrorLine[] = "\n Error renaming file";
constexpr std::size_t kConsoleLineSize = 64;

LogFileWriter* theInstance = nullptr;  // made and destroyed by the start and stop exports only

/// The second in which a failed rotation is being reported. A thread may end in the middle of that, so it
/// counts for no longer.
std::atomic<std::int64_t> reportingIn{-1};

}  // namespace

LogFileWriter* LogFileWriter::getInstance() noexcept {
    if (theInstance == nullptr) {
        try {
            theInstance = new LogFileWriter;
        } catch (const std::exception&) {
            // Memory ran out: the file logger works without a writer.
        }
    }
    return theInstance;
}

void LogFileWriter::destroyInstance() noexcept {
    delete theInstance;
    theInstance = nullptr;
}

LogFileWriter::LogFileWriter() {
    if (const int error = mutex_.creationError(); error != 0) {
        std::array<char, kConsoleLineSize> line{};
        std::snprintf(line.data(), line.size(), "CreateMutex error: %d\n", error);
        platform::echo(line.data());
        return;
    }
    const LogRevision deletesOldFiles;
    configuration_ = XMLConfigData::instance();
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

unsigned int LogFileWriter::takeNotices() noexcept {
    return notices_ == 0 ? 0 : notices_.exchange(0);
}

void LogFileWriter::report(unsigned int notices) {
    if ((notices & kWaitAbandoned) != 0) {
        platform::echo("\n The thread got ownership of an abandoned logging mutex.");
    }
    if ((notices & kRenameFailed) != 0) {
        reportingIn = platform::now();
        KRXLog(level::kForce, "%s", kRenameErrorLine);
        reportingIn = -1;
    }
    if ((notices & kReleaseFailed) != 0) {
        platform::echo("\n error while releasing logging mutex.");
    }
}

void LogFileWriter::writeWhenPassed(std::int32_t messageLevel, const char* message) noexcept {
    if (configuration_ != nullptr && configuration_->getLogLevel() <= messageLevel) {
        lockedWrite(message);
    }
}

void LogFileWriter::lockedWrite(const char* message) noexcept {
    const platform::KeepThread keep;
    switch (mutex_.wait()) {
        case platform::Mutex::Wait::Abandoned:
            notices_ |= kWaitAbandoned;
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
        notices_ |= kReleaseFailed;
    }
}

void LogFileWriter::writeEntry(const char* message) {
    stampEntry();
    const std::int64_t size = file_->size();
    const std::int32_t limit = platform::readNumber(configuration_->getFileSize());
    if (size >= limit && mayRotate(message)) {
        rotate(message);
    } else {
        file_->append(entryOf(message, false));
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
    file_->lookAgain();  // costs too much to be done for each entry
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

/// The report of a failed rotation comes back as an entry, maybe with lines that the agent adds; these would
/// fail to rotate and be reported in turn, without end. It may come later, too, from a queue of the agent's.
bool LogFileWriter::mayRotate(const char* message) const noexcept {
    constexpr std::size_t kLineEnd = 2;  // with a blank; the agent may have taken them off
    return reportingIn != entry_.second && std::strstr(message, kRenameErrorLine + kLineEnd) == nullptr;
}

void LogFileWriter::rotate(const char* message) {
    file_->close();
    const bool moved = moveToArchive();
    // Appending is right in both cases: after the move there is nothing to empty, and without it nothing may
    // be lost.
    file_->reopen();
    file_->append(entryOf(message, true));
    if (!moved) {
        notices_ |= kRenameFailed;
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
        // An archive that could not be opened just now is there all the same, and must not be lost.
        if (outcome != platform::Renaming::NameTaken) {
            if (collisionFlag_) {
                collisionFlag_ = false;
                collisionCounter_ = 0;
            }
            return outcome == platform::Renaming::Done;
        }
    }
    ++collisionCounter_;
    collisionFlag_ = true;
    return file_->moveToArchive(plain + std::to_string(collisionCounter_) + ".xml") ==
           platform::Renaming::Done;
}
