#pragma once

namespace platform {

/// Hands a command text to the system's command interpreter and waits for its end. 0 counts as success. No
/// descriptor of the module is inherited by the command. Any thread.
int runCommand(const char* command) noexcept;

}  // namespace platform
