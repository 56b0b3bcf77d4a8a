#pragma once

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
};
