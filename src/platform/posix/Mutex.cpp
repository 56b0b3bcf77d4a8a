#include "platform/Mutex.h"

#include "platform/ThreadEnd.h"

#include <cerrno>
#include <new>
#include <thread>

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
    static_assert(sizeof(pthread_mutex_t) <= sizeof storage_ && alignof(pthread_mutex_t) <= kAlignment);
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

// Looking again each millisecond, since a wait by the steady clock is not known to the thread sanitizer, and
// one by the wall clock depends on how that is set.
Mutex::Wait Mutex::waitFor(std::chrono::milliseconds time) noexcept {
    const KeepThread keep;
    const auto due = std::chrono::steady_clock::now() + time;
    Wait outcome = tryWait();
    while (outcome == Wait::Busy && std::chrono::steady_clock::now() < due) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        outcome = tryWait();
    }
    return outcome;
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
