// Where a thread may lose its turn.
#pragma once

#include "sim/Scheduler.h"

#include <cerrno>

namespace turns {

/// Whose threads take turns in this process.
inline sim::Scheduler* scheduler = nullptr;
/// The latest point of the calling thread.
inline thread_local const char* point = "its beginning";

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
