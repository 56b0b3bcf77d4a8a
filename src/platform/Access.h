#pragma once

#include <string>

namespace platform {

/// What the process may do with what is at a path (slashes or backslashes); false for what is not there. A
/// directory may be written when files can be made and removed in it.
bool mayRead(const std::string& path) noexcept;
bool mayWrite(const std::string& path) noexcept;
bool mayExecute(const std::string& path) noexcept;

/// True when what is at the path lies in a file system that is gone when the system stops.
bool isInMemory(const std::string& path) noexcept;

}  // namespace platform
