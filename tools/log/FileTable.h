#pragma once

#include "EntryWriter.h"
#include "LogFiles.h"
#include "TimeZone.h"

#include <cstdio>

namespace logreader {

/// The report on the files of a log themselves; each function prints it, and answers false when a file could not be
/// read.

/// Each file, oldest first: the times of its first and its last entry, how many it has, and its bytes.
bool printFiles(LogFiles& files, const TimeZone& logZone, EntryWriter& times, Form form, std::FILE* output);
/// The bytes of all of them.
bool printDiskUsage(LogFiles& files, Form form, std::FILE* output);

}  // namespace logreader
