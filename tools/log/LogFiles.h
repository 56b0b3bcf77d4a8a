#pragma once

#include "platform/File.h"

#include <string>
#include <vector>

namespace logreader {

/// True for a name that a rotation gives to a full log file, as kelp-logs2026_3_1_10_5_9.xml.
bool isArchiveName(const std::string& path);

/// The archives of a log file, oldest first. They lie where the log file's path up to its last "." leads,
/// wherever that is. `log`, which may be closed, is not among them, though it may just have become one.
std::vector<std::string> archivesOf(const std::string& logPath, const platform::File& log);

struct LogFile {
    std::string path;     ///< "-" stands for standard input
    platform::File file;  ///< open for a log file that is there, not yet for an archive
};

/// All files to be read for the ones named, each once, in order: archives first, oldest first, then log files
/// as they were named. A rotation that comes between this and the reading loses nothing.
std::vector<LogFile> filesFor(const std::vector<std::string>& named);

}  // namespace logreader
