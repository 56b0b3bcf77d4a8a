#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace platform {
class Directory;
}

/// The deletion of old log files: its construction deletes every file of the log file's family whose last
/// modification lies more than the configured number of days in the past. Names are taken as they are listed,
/// and nothing that a symbolic link leads to is deleted; its age counts when it is the younger one.
class LogRevision final {
  public:
    LogRevision();
    LogRevision(const LogRevision&) = delete;
    LogRevision& operator=(const LogRevision&) = delete;

    /// Takes hold of a directory and appends its entries' names. 0, or the error number, which is logged.
    static int listDirectory(const std::string& path, platform::Directory& directory,
                             std::vector<std::string>& names);
    /// Whole days since the entry's last modification, nothing when that cannot be told. One that was written
    /// when the clock was not set yet is as old as the clean-up that finds it, and is dated so.
    static std::optional<std::int64_t> fileAgeInDays(const platform::Directory& directory,
                                                     const std::string& name);
};
