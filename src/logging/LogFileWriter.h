#pragma once

#include "logging/LogFile.h"
#include "logging/Notices.h"
#include "platform/Mutex.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

class XMLConfigData;

/// Writes the entries of the log file and moves a full file to a time-stamped archive. One in the module,
/// created with the first `FileLogger`. Any thread; a thread that is writing may come in again.
class LogFileWriter final {
  public:
    static constexpr std::size_t kLongestMessage = 10239;  ///< characters kept of one message
    /// Characters that an archive's name has behind the log's up to its last "."; a second that has had an archive
    /// before takes a few more.
    static constexpr std::size_t kLongestArchiveEnd = sizeof("2026_12_31_23_59_59.xml") - 1;

    LogFileWriter(const LogFileWriter&) = delete;
    LogFileWriter& operator=(const LogFileWriter&) = delete;
    ~LogFileWriter() = default;

    /// The writer; making it deletes old log files and opens the log file. Null without memory.
    static std::shared_ptr<LogFileWriter> getInstance();
    /// Takes the writer away from newcomers; it goes with its last user.
    static void destroyInstance() noexcept;

    /// Write a message when the configured level lets it pass. A null message is written as a note of that.
    void writeForce(const char* message) noexcept;
    void writeError(const char* message) noexcept;
    void writeWarn(const char* message) noexcept;
    void writeInfo(const char* message) noexcept;
    void writeTrace(const char* message) noexcept;

    /// What is to be told by now; each happening is handed out once. Whoever called for a write hands it to
    /// `report` when it holds no lock any more.
    Notices takeNotices() noexcept;
    /// Tells it in the agent's log, which may bring that back here, and on standard output.
    static void report(const Notices& notices);

  private:
    /// An entry in the making: the text of its second stays in front while messages come and go behind it.
    struct Entry {
        static constexpr std::size_t kLongestStamp = 96;
        std::array<char, kLongestStamp + kLongestMessage + 1> text{};
        std::size_t stampLength = 0;
        std::int64_t second = -1;
    };

    LogFileWriter();

    void writeWhenPassed(std::int32_t messageLevel, const char* message) noexcept;
    void takeConfiguration() noexcept;
    void lockedWrite(const char* message) noexcept;
    void writeEntry(const char* message);
    void stampEntry() noexcept;
    std::string_view entryOf(const char* message, bool lineEnd) noexcept;
    void rotate(const char* message);
    bool moveToArchive();

    platform::Mutex mutex_;
    std::int32_t collisionCounter_ = 0;
    bool collisionFlag_ = false;
    std::shared_ptr<const XMLConfigData> configuration_;
    std::uint64_t configurationAge_ = 0;
    std::int32_t sizeLimit_ = 0;  ///< bytes
    std::optional<LogFile> file_;
    Entry entry_;
    std::int64_t toldIn_ = -1;  ///< the second of the last failed rename that is told of
    std::atomic<std::uint32_t> failedRenames_{0};
    std::atomic<std::uint32_t> abandonedWaits_{0};
    std::atomic<std::uint32_t> failedReleases_{0};
    bool isHeld_ = false;  ///< the file, as the last entry found it
    std::atomic<std::uint32_t> heldLogs_{0};
};
