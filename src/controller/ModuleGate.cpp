#include "controller/ModuleGate.h"

#include <atomic>
#include <mutex>

namespace gate {
namespace {

std::atomic<int> threadsInside{0};
std::atomic<bool> closed{false};
std::mutex lifecycle;
// Of the calling thread's passes. In the model of variables that exist with the thread: others are made at a
// thread's first access, and when there is no memory for that the C library ends the process.
thread_local int depth __attribute__((tls_model("initial-exec"))) = 0;

void countOut() noexcept {
    if (threadsInside.fetch_sub(1) == 1 && closed) {
        threadsInside.notify_all();
    }
}

}  // namespace

void Pass::enter() noexcept {
    if (depth++ > 0) {
        return;
    }
    for (;;) {
        // Count first, look second: the closing thread does it the other way round, so one of the two sees
        // the other.
        threadsInside.fetch_add(1);
        if (!closed) {
            return;
        }
        countOut();
        closed.wait(true);
    }
}

void Pass::leave() noexcept {
    if (--depth == 0) {
        countOut();
    }
}

Lifecycle::Lifecycle() noexcept {
    lifecycle.lock();
}

Lifecycle::~Lifecycle() {
    lifecycle.unlock();
}

Alone::Alone() noexcept {
    closed = true;
    for (int inside = threadsInside; inside != 0; inside = threadsInside) {
        threadsInside.wait(inside);
    }
    ++depth;
}

Alone::~Alone() {
    --depth;
    closed = false;
    closed.notify_all();
}

}  // namespace gate
