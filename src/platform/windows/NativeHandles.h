// What the system knows open files and directories by.
#pragma once

#include <array>
#include <cstdint>

namespace platform {

/// A system handle. This header comes into every room, so it does without the system's own types.
using NativeFile = std::intptr_t;
constexpr NativeFile kNoFile = -1;

/// Characters of a path, its end mark included. The system takes no more than 260 from most programs.
constexpr std::size_t kPathSize = 1024;

/// A directory whose handle lets nobody move or remove it, so that its path leads to it as long as
/// it is held.
struct NativeDirectory {
    NativeFile handle = kNoFile;
    std::array<char, kPathSize> path{};
};
constexpr NativeDirectory kNoDirectory{};

/// Whether a file can be renamed while this process has it open.
constexpr bool kRenamesOpenFiles = false;

}  // namespace platform
