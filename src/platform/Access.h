#pragma once

#include <string>

namespace platform {

/// What the process may do with the file at a path (slashes or backslashes); false when there is none. A
/// directory may be written when files can be made and removed in it.
bool mayRead(const std::string& path) noexcept;
bool mayWrite(const std::string& path) noexcept;
bool mayExecute(const std::string& path) noexcept;

/// True when the path lies in a file system whose contents are lost when the system stops.
bool isInMemory(const std::string& path) noexcept;

}  // namespace platform
