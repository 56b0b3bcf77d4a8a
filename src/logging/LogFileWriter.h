#pragma once

#include "platform/AnchoredFile.h"
#include "platform/File.h"
#include "platform/Mutex.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

class LogRevision;
class XMLConfigData;

/// Writes the entries of the log file and moves a full file to a time-stamped archive. One in the module,
/// created with the first `FileLogger`. Any thread; a thread that is writing may come in again (a failed
/// rotation is reported to the log).
class LogFileWriter final {
  public:
    static constexpr std::size_t kLongestMessage = 10239;  ///< characters kept of one message

    LogFileWriter(const LogFileWriter&) = delete;
    LogFileWriter& operator=(const LogFileWriter&) = delete;
    ~LogFileWriter();

    /// The writer, created on the first call, which deletes old log files and opens the log file. Null
    /// without memory.
    static std::shared_ptr<LogFileWriter> getInstance() noexcept;

    /// What went wrong since the last call, for `report`; 0 is nothing.
    unsigned int takeNotices() noexcept;
    /// Logs and prints what `takeNotices` answered. To be called with no lock held.
    static void report(unsigned int notices);

    /// Write a message when the configured level lets it pass. A null message is written as a note of that.
    void writeForce(const char* message) noexcept;
    void writeError(const char* message) noexcept;
    void writeWarn(const char* message) noexcept;
    void writeInfo(const char* message) noexcept;
    void writeTrace(const char* message) noexcept;

  private:
    /// An entry in the making: the text of its second stays in front while messages come and go behind it.
    struct Entry {
        static constexpr std::size_t kLongestStamp = 96;
        std::array<char, kLongestStamp + kLongestMessage + 1> text{};
        std::size_t stampLength = 0;
        std::int64_t second = -1;
    };

    enum Notice : unsigned int { kRenameFailed = 1, kMutexAbandoned = 2, kReleaseFailed = 4 };

    LogFileWriter();

    void writeWhenPassed(std::int32_t messageLevel, const char* message) noexcept;
    void lockedWrite(const char* message) noexcept;
    void writeEntry(const char* message);
    void stampEntry();
    std::int64_t fileSize() noexcept;
    void followReplacedFile(std::int64_t size) noexcept;
    void append(const char* message, bool lineEnd) noexcept;
    void rotate(const char* message);
    bool moveToArchive();

    platform::Mutex mutex_;
    std::unique_ptr<LogRevision> revision_;
    std::int32_t collisionCounter_ = 0;
    bool collisionFlag_ = false;
    /// A rotation could not open the fresh file: opening it is still due.
    bool openingDue_ = false;
    std::atomic<unsigned int> notices_{0};
    std::shared_ptr<const XMLConfigData> configuration_;
    std::string path_;
    platform::AnchoredFile file_;
    platform::File stream_;
    std::int64_t expectedSize_ = 0;  ///< of the file, as this writer left it
    Entry entry_;
};
