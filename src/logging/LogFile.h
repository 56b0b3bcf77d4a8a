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
    /// Opens it for appending. When that fails the file stays closed until the end of a rotation, or until the
    /// program that keeps it to itself lets go.
    explicit LogFile(const std::string& path);
    LogFile(const LogFile&) = delete;
    LogFile& operator=(const LogFile&) = delete;

    /// The length of what stands at the path now, 0 when nothing does or it may not be read. Another file than
    /// the open one is opened in its place; when it cannot be, or is not a regular file, the open one is written
    /// on, and its length counts.
    std::int64_t size() noexcept;
    /// To be called now and then: finds a directory that was replaced.
    void lookForDirectory() noexcept;
    /// Writes an entry at the end, or nothing: when the file is closed, or there is no room.
    void append(std::string_view entry) noexcept;
    /// It is closed since another program keeps it to itself; the next `append` tries again.
    bool isHeld() const noexcept { return held_ && !stream_.isOpen(); }

    // Around `moveToArchive`. Where the system allows it the file stays open until what stands at the path
    // afterwards is open, too, made when missing, never emptied: when that fails entries go on in the old one.
    // One that was closed is opened whatever became of the move, by the next `append` when not now.
    void beginRotation() noexcept;
    void endRotation(bool moved) noexcept;

    /// An archive is called as the path up to its last ".", and what is given here.
    bool hasArchive(const std::string& suffix) const;
    platform::Renaming moveToArchive(const std::string& suffix) const;

  private:
    bool openStream() noexcept;

    std::string directoryPath_;
    std::string name_;
    std::string archiveName_;  ///< the beginning of one, beside the log file or with an absolute path
    platform::Directory directory_;
    platform::File stream_;
    platform::Look written_;  ///< the open one, as it was when it was opened
    platform::Look judged_;   ///< what `mayRead_` was asked for: only who may do what can change that
    bool mayRead_ = false;
    bool reopenDue_ = false;
    bool held_ = false;
};
