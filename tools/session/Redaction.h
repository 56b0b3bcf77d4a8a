#pragma once

namespace session {

class SessionRecord;

/// Leaves out the names of members and operators. Of a message that the agent handed over, nothing stays but what the
/// configuration names; of a log, nothing but that and the lines of the module that hold no name. What is found to be a
/// name is left out wherever it stands. Once all lines of the session are there.
void leaveNamesOut(SessionRecord& record);

}  // namespace session
