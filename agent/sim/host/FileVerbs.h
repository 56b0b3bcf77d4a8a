// Files as the environment of a host changes them. Paths may have backslashes as separators. All functions
// throw std::runtime_error naming the path.
#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace sim {

/// Replaces the file, makes the directories that it needs, and lets it be modified at `wall`.
void writeFile(const std::string& path, const std::string& text, std::chrono::microseconds wall);
/// Removes a file, or a directory with all that is in it; a missing one is fine.
void removeFile(const std::string& path);
/// Sets when an existing file was modified.
void setModified(const std::string& path, std::chrono::microseconds wall);
/// The contents, or none when there is no such file.
std::optional<std::string> readFile(const std::string& path);

}  // namespace sim
