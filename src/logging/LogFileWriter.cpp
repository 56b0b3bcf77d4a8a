#include "logging/LogFileWriter.h"

#include "config/XMLConfigData.h"
#include "logging/LogRevision.h"
#include "platform/Clock.h"
#include "platform/Console.h"
#include "platform/Number.h"
#include "platform/agent/Logging.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <new>

namespace {

constexpr int kTmYearOrigin = 1900;
constexpr char kNullMessage[] = "Received NULL message for Logging.";
constexpr std::size_t kConsoleLineSize = 64;

LogFileWriter* theInstance = nullptr;  // made and destroyed by the start and stop exports only

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
    revision_ = std::make_unique<LogRevision>();
    configuration_ = XMLConfigData::instance();
    if (configuration_ == nullptr) {
        return;
    }
    path_ = configuration_->getLogFilePath();
    file_.setPath(path_);
    stream_ = file_.open(platform::OpenMode::Append);
    expectedSize_ = stream_.size();
}

LogFileWriter::~LogFileWriter() = default;

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

void LogFileWriter::writeWhenPassed(std::int32_t messageLevel, const char* message) noexcept {
    if (configuration_ != nullptr && configuration_->getLogLevel() <= messageLevel) {
        lockedWrite(message);
    }
}

void LogFileWriter::lockedWrite(const char* message) noexcept {
    switch (mutex_.wait()) {
        case platform::Mutex::Wait::Abandoned:
            platform::echo("\n The thread got ownership of an abandoned logging mutex.");
            return;
        case platform::Mutex::Wait::Busy:
        case platform::Mutex::Wait::Failed:
            return;
        case platform::Mutex::Wait::Obtained:
            break;
    }
    try {
        writeEntry(message);
    } catch (const std::exception&) {
        // Memory ran out while an archive name was made; the entry is lost, the next one tries again.
    }
    if (!mutex_.release()) {
        platform::echo("\n error while releasing logging mutex.");
    }
}

void LogFileWriter::writeEntry(const char* message) {
    stampEntry();
    const std::int64_t size = fileSize();
    const std::int32_t limit = platform::readNumber(configuration_->getFileSize());
    if (size >= limit && !reportingFailure_) {
        rotate(message);
        return;
    }
    if (openingDue_) {
        stream_ = file_.open(platform::OpenMode::Append);
        openingDue_ = !stream_.isOpen();
        expectedSize_ = stream_.size();
    }
    if (stream_.isOpen()) {
        append(message, false);
    }
}

void LogFileWriter::stampEntry() {
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
    // Once a second is often enough to notice that the directory was replaced.
    file_.refresh();
}

std::int64_t LogFileWriter::fileSize() noexcept {
    std::int64_t size = file_.probeSize();
    if (size != expectedSize_ && stream_.isOpen()) {
        followReplacedFile(size);
        size = expectedSize_;
    }
    return std::max<std::int64_t>(size, 0);
}

/// The size is not what this writer left: another process wrote to the file, or took it away. In the latter
/// case entries would go on into a file that nobody finds.
void LogFileWriter::followReplacedFile(std::int64_t size) noexcept {
    if (size < 0) {
        file_.refresh();
    }
    const platform::File present = file_.open(platform::OpenMode::Read);
    if (!present.isOpen() || !present.isSameFile(stream_)) {
        if (platform::File fresh = file_.open(platform::OpenMode::Append); fresh.isOpen()) {
            stream_ = std::move(fresh);
        }
    }
    expectedSize_ = stream_.size();
}

void LogFileWriter::append(const char* message, bool lineEnd) noexcept {
    if (message == nullptr) {
        message = kNullMessage;
    }
    char* const text = entry_.text.data() + entry_.stampLength;
    std::size_t length = strnlen(message, kLongestMessage);
    std::memcpy(text, message, length);
    if (lineEnd) {
        text[length++] = '\n';
    }
    const std::size_t entryLength = entry_.stampLength + length;
    if (stream_.append({entry_.text.data(), entryLength})) {
        expectedSize_ += static_cast<std::int64_t>(entryLength);
    }
}

void LogFileWriter::rotate(const char* message) {
    stream_.close();
    openingDue_ = true;
    const bool moved = moveToArchive();
    // Appending is right in both cases: after the move there is nothing to empty, and without it nothing may
    // be lost.
    stream_ = file_.open(platform::OpenMode::Append);
    openingDue_ = !stream_.isOpen();
    expectedSize_ = stream_.size();
    if (stream_.isOpen()) {
        append(message, true);
    }
    if (!moved) {
        reportingFailure_ = true;
        KRXLog(250, "\n Error renaming file");
        reportingFailure_ = false;
    }
}

bool LogFileWriter::moveToArchive() {
    const std::tm fields = platform::localFields(platform::now());
    std::array<char, Entry::kLongestStamp> date{};
    std::snprintf(date.data(), date.size(), "%d_%d_%d_%d_%d_%d", fields.tm_year + kTmYearOrigin,
                  fields.tm_mon + 1, fields.tm_mday, fields.tm_hour, fields.tm_min, fields.tm_sec);
    const std::string archive = path_.substr(0, path_.rfind('.')) + date.data();
    const std::string plainName = archive + ".xml";
    if (!platform::File::open(plainName, platform::OpenMode::Read).isOpen()) {
        const bool moved = platform::renameFile(path_, plainName);
        // An archive that could not be opened just now is there all the same, and must not be lost.
        if (moved || errno != EEXIST) {
            if (collisionFlag_) {
                collisionFlag_ = false;
                collisionCounter_ = 0;
            }
            return moved;
        }
    }
    ++collisionCounter_;
    collisionFlag_ = true;
    return platform::renameFile(path_, archive + std::to_string(collisionCounter_) + ".xml");
}
