#pragma once

#include <cxxabi.h>

namespace platform {

#ifdef __GLIBCXX__
using ForcedUnwind = abi::__forced_unwind;
#else
/// libc++ has no type for it and tells it from no other exception: an agent that unwinds threads needs a module built with
/// libstdc++.
struct ForcedUnwind {};
#endif

}  // namespace platform
