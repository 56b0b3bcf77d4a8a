#include "platform/ThreadEnd.h"

#include <pthread.h>
#include <unistd.h>

namespace platform {
namespace {

const pid_t loadedBy = ::getpid();

}  // namespace

KeepThread::KeepThread() noexcept {
    pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &before_);
}

KeepThread::~KeepThread() {
    pthread_setcancelstate(before_, nullptr);
}

// A child of fork() that ends has no other threads, but copies of the locks that they held.
bool mayWaitAtUnload() noexcept {
    return ::getpid() == loadedBy;
}

}  // namespace platform
