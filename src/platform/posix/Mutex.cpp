#include "platform/Mutex.h"

#include <cerrno>
#include <ctime>
#include <new>

#include <pthread.h>

namespace platform {
namespace {

pthread_mutex_t* systemMutex(void* storage) noexcept {
    return std::launder(static_cast<pthread_mutex_t*>(storage));
}

Mutex::Wait outcomeOf(int result, pthread_mutex_t* mutex) noexcept {
    switch (result) {
        case 0:
            return Mutex::Wait::Obtained;
        case EBUSY:
        case ETIMEDOUT:
            return Mutex::Wait::Busy;
        case EOWNERDEAD:
            pthread_mutex_consistent(mutex);
            pthread_mutex_unlock(mutex);
            return Mutex::Wait::Abandoned;
        default:
            return Mutex::Wait::Failed;
    }
}

}  // namespace

Mutex::Mutex() noexcept {
    static_assert(sizeof(pthread_mutex_t) <= sizeof storage_);
    auto* const mutex = ::new (storage_.data()) pthread_mutex_t;
    pthread_mutexattr_t attributes;
    creationError_ = pthread_mutexattr_init(&attributes);
    if (creationError_ == 0) {
        pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
        pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST);
        creationError_ = pthread_mutex_init(mutex, &attributes);
        pthread_mutexattr_destroy(&attributes);
    }
}

Mutex::~Mutex() {
    if (creationError_ == 0) {
        pthread_mutex_destroy(systemMutex(storage_.data()));
    }
}

Mutex::Wait Mutex::wait() noexcept {
    if (creationError_ != 0) {
        return Wait::Failed;
    }
    auto* const mutex = systemMutex(storage_.data());
    return outcomeOf(pthread_mutex_lock(mutex), mutex);
}

Mutex::Wait Mutex::waitFor(std::chrono::milliseconds time) noexcept {
    if (creationError_ != 0) {
        return Wait::Failed;
    }
    timespec until{};
    ::clock_gettime(CLOCK_MONOTONIC, &until);
    const auto due = std::chrono::seconds(until.tv_sec) + std::chrono::nanoseconds(until.tv_nsec) + time;
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(due);
    until.tv_sec = seconds.count();
    until.tv_nsec = std::chrono::nanoseconds(due - seconds).count();
    auto* const mutex = systemMutex(storage_.data());
    return outcomeOf(pthread_mutex_clocklock(mutex, CLOCK_MONOTONIC, &until), mutex);
}

Mutex::Wait Mutex::tryWait() noexcept {
    if (creationError_ != 0) {
        return Wait::Failed;
    }
    auto* const mutex = systemMutex(storage_.data());
    return outcomeOf(pthread_mutex_trylock(mutex), mutex);
}

bool Mutex::release() noexcept {
    return creationError_ == 0 && pthread_mutex_unlock(systemMutex(storage_.data())) == 0;
}

}  // namespace platform
