#pragma once

#include <cxxabi.h>

namespace platform {

using ForcedUnwind = abi::__forced_unwind;

}  // namespace platform
