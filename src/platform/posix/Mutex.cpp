#include "platform/Mutex.h"

#include <cerrno>
#include <new>

#include <pthread.h>

namespace platform {

struct Mutex::Handle {
    pthread_mutex_t mutex{};
};

Mutex::Mutex() noexcept : handle_(new (std::nothrow) Handle) {
    if (!handle_) {
        creationError_ = ENOMEM;
        return;
    }
    pthread_mutexattr_t attributes;
    creationError_ = pthread_mutexattr_init(&attributes);
    if (creationError_ == 0) {
        pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
        pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST);
        creationError_ = pthread_mutex_init(&handle_->mutex, &attributes);
        pthread_mutexattr_destroy(&attributes);
    }
    if (creationError_ != 0) {
        handle_.reset();
    }
}

Mutex::~Mutex() {
    if (handle_) {
        pthread_mutex_destroy(&handle_->mutex);
    }
}

Mutex::Wait Mutex::wait() noexcept {
    if (!handle_) {
        return Wait::Failed;
    }
    switch (pthread_mutex_lock(&handle_->mutex)) {
        case 0:
            return Wait::Obtained;
        case EOWNERDEAD:
            pthread_mutex_consistent(&handle_->mutex);
            pthread_mutex_unlock(&handle_->mutex);
            return Wait::Abandoned;
        default:
            return Wait::Failed;
    }
}

bool Mutex::release() noexcept {
    return handle_ && pthread_mutex_unlock(&handle_->mutex) == 0;
}

}  // namespace platform
