// The module's calls of the system.
#pragma once

#include "sim/windows/WindowsTime.h"

#include <string_view>

namespace sim {

/// Has a library's calls of a function of another library go to `target`, which is of the same form.
void redirect(HMODULE library, std::string_view function, void* target);
/// Has a library's calls of the clock and of the file functions come here first: its time is the shown one,
/// and so is that of the files which it makes or writes.
void takeCallsOf(HMODULE library);
/// Closes what files and directories the library has left open, as the end of its process would.
void closeHandlesOfModule();

}  // namespace sim
