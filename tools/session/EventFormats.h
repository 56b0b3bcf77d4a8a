// A session's events for other programs.
#pragma once

#include <ostream>
#include <vector>

namespace session {

class SessionRecord;

/// One row an event, below a heading. A text that a spreadsheet would take as a formula has a ' before it.
void writeCsv(const SessionRecord& session, std::ostream& target);

/// The JSON of trace viewers: modes and remote activity as spans, each session a process of its own. The times of
/// several sessions are those of their clocks, when all have one.
void writeTraceEvents(const std::vector<const SessionRecord*>& sessions, std::ostream& target);

}  // namespace session
