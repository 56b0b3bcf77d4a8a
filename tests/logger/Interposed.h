// System functions that the module finds in the test program instead of in the C library.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>

#include <sys/types.h>

namespace interposed {

/// The present in seconds; 0 for the system's. Set back to that by the test.
extern std::atomic<std::int64_t> now;
/// What a write does instead of the system's, when set.
extern std::function<ssize_t(int descriptor, const void* data, std::size_t size)> write;

}  // namespace interposed
