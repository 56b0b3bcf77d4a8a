// Reading of directories with the contract that POSIX has for it, over the system's find functions. Errors
// are told in `errno`: 2 when there is no directory, 9 for an invalid scan, 5 when a scan fails on its way.
#pragma once

namespace platform::windows {

struct DIR;

/// Begins a scan; null, with 2, when the name leads to no directory or there is no memory.
DIR* opendir(const char* name) noexcept;
/// The next entry's name, valid until the next call. Null, with 2, behind the last one; then with 9.
const char* readdir(DIR* directory) noexcept;
/// Ends a scan. 0, or -1 with 9.
int closedir(DIR* directory) noexcept;

}  // namespace platform::windows
