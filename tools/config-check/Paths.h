// Paths as the module takes them.
#pragma once

#include <filesystem>
#include <string>

namespace check {

/// The system's spelling: the module's paths may be written with backslashes.
std::filesystem::path nativePath(const std::string& path);
/// Where a path leads from the working directory of this process, without "." and "..".
std::filesystem::path fromHere(const std::string& path);
bool isRelative(const std::string& path);

}  // namespace check
