// Opening of descriptors, shared by the POSIX files of this layer.
#pragma once

#include "platform/File.h"

#include <array>

namespace platform::posix {

using PathBuffer = std::array<char, 4096>;

/// Copies a path in the system's own spelling (slashes). False, with `errno` set, when it is too long or
/// holds a NUL.
bool toNative(std::string_view path, PathBuffer& native) noexcept;

/// Opens `path` below `directory` (or AT_FDCWD). A descriptor above the standard ones, or -1 with `errno`
/// set. The caller keeps its thread.
int openDescriptor(int directory, const char* path, int flags) noexcept;

/// As above in one of the file modes, and only for a regular file.
int openRegular(int directory, const char* path, OpenMode mode) noexcept;

/// What stands at `path` below `directory`, or is open as `directory` (AT_EMPTY_PATH). As true as an opening
/// would tell it, also where a file lies on another machine.
Look lookAt(int directory, const char* path, int flags) noexcept;

/// Whether file sizes were limited when one was opened last. Writes then need `WriteSignals`, for which
/// others need not pay.
bool isSizeLimited() noexcept;

}  // namespace platform::posix
