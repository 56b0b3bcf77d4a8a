#pragma once

namespace platform {

/// Hands a command text to the system's command interpreter and waits for its end. 0 counts as success. No
/// descriptor of the module is inherited by the command, and what was written to standard output stands
/// before its own. When the calling thread is ended by unwinding in the meantime, the interpreter is ended,
/// too. Any thread.
int runCommand(const char* command);

}  // namespace platform
