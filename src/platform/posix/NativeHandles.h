// What the system knows open files and directories by.
#pragma once

namespace platform {

using NativeFile = int;
constexpr NativeFile kNoFile = -1;

using NativeDirectory = int;
constexpr NativeDirectory kNoDirectory = -1;

}  // namespace platform
