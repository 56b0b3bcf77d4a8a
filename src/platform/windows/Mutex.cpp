#include "platform/Mutex.h"

#include "platform/windows/System.h"

#include <new>

namespace platform {
namespace {

HANDLE systemMutex(void* storage) noexcept {
    return *std::launder(static_cast<HANDLE*>(storage));
}

Mutex::Wait outcomeOf(DWORD result, HANDLE mutex) noexcept {
    switch (result) {
        case WAIT_OBJECT_0:
            return Mutex::Wait::Obtained;
        case WAIT_TIMEOUT:
            return Mutex::Wait::Busy;
        case WAIT_ABANDONED:  // which makes the waiter the owner
            ::ReleaseMutex(mutex);
            return Mutex::Wait::Abandoned;
        default:
            return Mutex::Wait::Failed;
    }
}

Mutex::Wait waitAtMost(int creationError, HANDLE mutex, DWORD milliseconds) noexcept {
    return creationError != 0 ? Mutex::Wait::Failed
                              : outcomeOf(::WaitForSingleObject(mutex, milliseconds), mutex);
}

}  // namespace

Mutex::Mutex() noexcept {
    static_assert(sizeof(HANDLE) <= sizeof storage_ && alignof(HANDLE) <= kAlignment);
    const HANDLE mutex = ::CreateMutexA(nullptr, FALSE, nullptr);
    ::new (storage_.data()) HANDLE(mutex);
    if (mutex == nullptr) {
        creationError_ = static_cast<int>(::GetLastError());
    }
}

Mutex::~Mutex() {
    if (creationError_ == 0) {
        ::CloseHandle(systemMutex(storage_.data()));
    }
}

Mutex::Wait Mutex::wait() noexcept {
    return waitAtMost(creationError_, systemMutex(storage_.data()), INFINITE);
}

Mutex::Wait Mutex::waitFor(std::chrono::milliseconds time) noexcept {
    return waitAtMost(creationError_, systemMutex(storage_.data()), static_cast<DWORD>(time.count()));
}

Mutex::Wait Mutex::tryWait() noexcept {
    return waitAtMost(creationError_, systemMutex(storage_.data()), 0);
}

bool Mutex::release() noexcept {
    return creationError_ == 0 && ::ReleaseMutex(systemMutex(storage_.data())) != FALSE;
}

}  // namespace platform
