// Reads a kept trace.
#pragma once

#include <istream>
#include <string>

namespace session {

class SessionRecord;

/// Adds all lines of `trace` to `session`. Throws std::runtime_error ("FILE:LINE: reason") at one that is no
/// event. A last line without its end, as a killed program leaves it, is left out: then the answer is false.
bool readTrace(std::istream& trace, const std::string& file, SessionRecord& session);

}  // namespace session
