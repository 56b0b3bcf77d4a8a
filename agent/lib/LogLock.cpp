#include "lib/LogLock.h"

#include "lib/Plugs.h"
#include "lib/Runtime.h"
#include "lib/Thread.h"

#include <atomic>

namespace agent {

namespace {

std::atomic<const void*> owner = nullptr;  // taken in a condition of the runtime
int depth = 0;                             // the owner's

/// Something that only the calling thread has.
const void* self() {
    return &Place::here();
}

void giveBack(int levels) {
    runtime().change([levels] {
        depth -= levels;
        if (depth == 0) {
            owner = nullptr;
        }
    });
}

}  // namespace

LogLock::LogLock(bool wanted) : held_(wanted) {
    if (held_) {
        Thread::block(Thread::kForever, [me = self()] {
            const void* nobody = nullptr;
            owner.compare_exchange_strong(nobody, me);
            return owner == me;
        });
        ++depth;
    }
}

LogLock::~LogLock() {
    if (held_) {
        giveBack(1);
    }
}

void LogLock::drop() {
    if (owner == self()) {
        giveBack(depth);
    }
}

}  // namespace agent
