// What the module's entry is measured against.
#pragma once

#include <cstdio>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include <fcntl.h>
#include <spdlog/logger.h>
#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/rotating_file_sink.h>
#include <sys/stat.h>
#include <unistd.h>

namespace bench {

constexpr std::size_t kFullSize = 2'000'000'000;  // of a log file in this program: never reached

inline void echo(const std::string& message) {
    std::fwrite(message.data(), 1, message.size(), stdout);
}

/// The size check that each entry of the module makes: opens the file, takes its length, closes it.
inline bool isFull(const std::string& path) {
    const int probe = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    const off_t size = ::lseek(probe, 0, SEEK_END);
    ::close(probe);
    return size >= static_cast<off_t>(kFullSize);
}

/// What no entry can do without, asked for as directly as can be: the size check, one write, the echo.
class Floor final {
  public:
    Floor(std::string path, const std::string& message)
        : path_(std::move(path)), message_(message), text_("Date:2026-3-14 Time:15:9:26 :: " + message) {}
    Floor(const Floor&) = delete;
    Floor& operator=(const Floor&) = delete;
    ~Floor() {
        ::close(descriptor_);
        ::close(directory_);
    }

    void entry() {
        checkAndWrite();
        echo(message_);
    }

    /// The same with a look in place of the opening, as one who holds the directory can have it.
    void lookingEntry() {
        struct statx seen {};
        if (::statx(directory_, name_.c_str(), 0, STATX_SIZE, &seen) == 0 && seen.stx_size < kFullSize) {
            write();
        }
        echo(message_);
    }

    /// With the file's part under a mutex: without one, several threads could all find the file not full yet.
    void lockedEntry() {
        {
            const std::lock_guard lock(mutex_);
            checkAndWrite();
        }
        echo(message_);
    }

  private:
    void checkAndWrite() {
        if (!isFull(path_)) {
            write();
        }
    }

    void write() const {
        [[maybe_unused]] const ssize_t written = ::write(descriptor_, text_.data(), text_.size());
    }

    std::string path_;
    std::string name_ = path_.substr(path_.rfind('/') + 1);
    std::string message_;
    std::string text_;
    int directory_ = ::open(path_.substr(0, path_.rfind('/')).c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
    int descriptor_ = ::open(path_.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0666);
    std::mutex mutex_;
};

/// spdlog's rotating file sink, flushed at each entry, and the same echo. It remembers the file's size.
class SpdlogFile final {
  public:
    SpdlogFile(const std::string& path, std::string message)
        : path_(path),
          message_(std::move(message)),
          logger_("log", std::make_shared<spdlog::sinks::rotating_file_sink_mt>(path, kFullSize, 1)) {
        logger_.set_formatter(std::make_unique<spdlog::pattern_formatter>(
            "Date:%Y-%m-%d Time:%H:%M:%S :: %v", spdlog::pattern_time_type::local, ""));
        logger_.flush_on(spdlog::level::trace);
    }

    void entry() {
        logger_.info(message_);
        echo(message_);
    }

    void checkedEntry() {
        if (!isFull(path_)) {
            entry();
        }
    }

  private:
    std::string path_;
    std::string message_;
    spdlog::logger logger_;
};

}  // namespace bench
