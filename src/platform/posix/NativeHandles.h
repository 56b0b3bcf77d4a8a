// What the system knows open files and directories by.
#pragma once

namespace platform {

using NativeFile = int;
constexpr NativeFile kNoFile = -1;

using NativeDirectory = int;
constexpr NativeDirectory kNoDirectory = -1;

/// Whether a file can be renamed while this process has it open.
constexpr bool kRenamesOpenFiles = true;

}  // namespace platform
