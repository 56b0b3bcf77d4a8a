#pragma once

#include "platform/Directory.h"
#include "platform/File.h"

#include <cstdint>
#include <string>
#include <string_view>

/// The file that the log path leads to, and the archives beside it. What stands at the path may change at any
/// time, other processes write to it, take it away, put something else there; entries follow it. Only a
/// regular file is ever written or moved. Not for use by two threads at once.
///
/// The directory is held open, which makes each look at the file cheaper. Its place is taken once: a relative
/// path stays where the process's working directory was then.
class LogFile final {
  public:
    /// Opens it for appending. When that fails the file stays closed until `reopen`.
    explicit LogFile(const std::string& path);
    LogFile(const LogFile&) = delete;
    LogFile& operator=(const LogFile&) = delete;

    /// The length of what stands at the path now, 0 when that cannot be opened for reading. An open file of
    /// another length than `append` left is looked for afresh.
    std::int64_t size() noexcept;
    /// To be called now and then: finds a directory or file that was replaced, be it by one of equal length.
    void lookAgain() noexcept;
    /// Writes an entry at the end, or nothing: when the file is closed, or there is no room.
    void append(std::string_view entry) noexcept;

    /// Until `reopen`. When that is not called or fails, each `append` makes up for it.
    void close() noexcept;
    /// Opens what stands at the path, made when missing, never emptied.
    void reopen() noexcept;

    /// An archive is called as the path up to its last ".", and what is given here.
    bool hasArchive(const std::string& suffix) const;
    platform::Renaming moveToArchive(const std::string& suffix) const;

  private:
    void openStream() noexcept;
    void follow() noexcept;

    std::string directoryPath_;
    std::string name_;
    std::string archiveName_;  ///< the beginning of one, beside the log file or with an absolute path
    platform::Directory directory_;
    platform::File stream_;
    std::int64_t expectedSize_ = 0;  ///< as `append` left it
    bool reopenDue_ = false;
};
