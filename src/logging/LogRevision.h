#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// The deletion of old log files: its construction deletes every file of the log file's family whose last
/// modification lies more than the configured number of days in the past.
class LogRevision final {
  public:
    LogRevision();
    LogRevision(const LogRevision&) = delete;
    LogRevision& operator=(const LogRevision&) = delete;

    /// Appends the names of all entries of a directory. 0, or the error number, which is logged.
    static int listDirectory(const std::string& directory, std::vector<std::string>& names);
    /// Whole days since the file's last modification, 0 when that cannot be told.
    static std::int64_t fileAgeInDays(const std::string& path);
};
