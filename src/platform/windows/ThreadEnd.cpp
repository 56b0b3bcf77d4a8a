#include "platform/ThreadEnd.h"

namespace platform {

// A terminated thread runs nothing of its own any more, which nothing can hold up.
KeepThread::KeepThread() noexcept = default;

KeepThread::~KeepThread() = default;

// The loader's lock is held during that time, and no thread begins or ends without it.
bool mayWaitAtUnload() noexcept {
    return false;
}

}  // namespace platform
