// Paths and opening, shared by the Windows files of this layer.
#pragma once

#include "platform/File.h"
#include "platform/windows/System.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace platform::windows {

using PathBuffer = std::array<char, kPathSize>;

/// Copies a path in the system's own spelling (backslashes). False when it is too long or holds a NUL.
bool toNative(std::string_view path, PathBuffer& native) noexcept;
/// The path from a drive's root on. False when it is too long, or leads through the working directory and that
/// has letters that the code page lacks: the system gives similar ones for them, which another directory may have.
bool fullPath(const char* path, PathBuffer& full) noexcept;
/// Whether a path says by itself where it begins: at a drive's root, or at another computer's share.
bool isAbsolute(std::string_view path) noexcept;

inline HANDLE systemHandle(NativeFile file) noexcept {
    return reinterpret_cast<HANDLE>(file);
}

/// Opens a native path in one of the file modes, and only a regular file; else `kNoFile`, and `errno` says why.
/// Nobody inherits it.
NativeFile openRegular(const char* path, OpenMode mode) noexcept;

/// Seconds since 1970 of a moment of the system's.
std::int64_t secondsOf(const FILETIME& moment) noexcept;
/// The other way round.
FILETIME momentOf(std::int64_t seconds) noexcept;

}  // namespace platform::windows
