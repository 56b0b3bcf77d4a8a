// Where a thread may lose its turn.
#pragma once

#include "sim/time/Scheduler.h"

#include <cerrno>
#include <functional>
#include <vector>

namespace turns {

/// Whose threads take turns in this process.
inline sim::Scheduler* scheduler = nullptr;
/// The latest point of the calling thread.
inline thread_local const char* point = "its beginning";

/// The module's locks in the order in which they were made, and the place of one that keeps nobody out, if any.
inline std::vector<const void*> locks;
inline std::size_t without = static_cast<std::size_t>(-1);
/// Each instruction under that one is a point, too: under some nothing is called.
inline bool steps = false;
/// Standard output is read as soon as this holds.
inline std::function<bool()> isRead = [] { return true; };

/// The calling thread has come to a point at which another one may go on.
inline void offer(const char* name) {
    if (scheduler != nullptr) {
        const int saved = errno;
        point = name;
        scheduler->offerTurn();
        errno = saved;
    }
}

}  // namespace turns
