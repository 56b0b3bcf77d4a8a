// What the simulator wants of the operating system beyond the C++ library; posix/ and windows/ supply it, as
// they do for Bell, Input, Module, StdoutCapture and Terminal.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace sim::system {

/// The module: in an installed tree or a build where it lies by this program, else where the loader finds it.
std::string moduleBesideProgram();

/// Whether a program that this process started still runs.
bool childRuns();

/// The system's own time, since 1970.
std::chrono::microseconds realTime();

/// Whether something stands at the path that is not a regular file.
bool isOther(const std::filesystem::path& path);

/// Sets when an existing file was modified (since 1970). Throws std::system_error.
void setModified(const std::filesystem::path& path, std::chrono::microseconds moment);

/// A descriptor for writing bytes as they are: of a file that is made or emptied, or without a path of what
/// is standard output now. Throws std::system_error.
int openOutput(const std::optional<std::string>& path);
/// Writes all of it: 0, or the error number.
int writeAll(int descriptor, std::string_view bytes);
void closeOutput(int descriptor);
/// How many columns the terminal has that the descriptor leads to, if it leads to one.
std::optional<std::size_t> widthOf(int descriptor);

}  // namespace sim::system
