#include "platform/ThreadEnd.h"

#include <pthread.h>

namespace platform {

KeepThread::KeepThread() noexcept {
    pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &before_);
}

KeepThread::~KeepThread() {
    pthread_setcancelstate(before_, nullptr);
}

bool mayWaitAtUnload() noexcept {
    return true;
}

}  // namespace platform
