// A session as a device's log tells it.
#pragma once

#include <string>
#include <string_view>

namespace session {

class SessionRecord;

/// Whether the file is a log or an archive, and no trace.
bool isLog(const std::string& path);

/// Whether an entry is one of the module's lines by which its work is followed; none of them holds a name.
bool isModuleLine(std::string_view text);
/// Whether it is the first of an agent that was started.
bool beginsAnew(std::string_view text);

/// Adds what the log file with its archives tells: each entry, and what the module's own lines and the audit texts of
/// the record's configuration mean. Throws std::runtime_error when one cannot be read.
void readLog(const std::string& file, SessionRecord& record);

}  // namespace session
