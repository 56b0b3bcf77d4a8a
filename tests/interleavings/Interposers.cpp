// The module's locks, waits and calls on files, as the program that explores sees them: each is a point at which
// the calling thread may lose its turn, and none waits in real time.
#include "Turns.h"
#include "lib/Thread.h"
#include "sim/time/ProcessTime.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <ctime>
#include <linux/futex.h>
#include <set>
#include <ucontext.h>

#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <unistd.h>

#define INTERPOSED __attribute__((visibility("default"), noinline))
#define IS_MODULES sim::isModuleCall(__builtin_return_address(0))

namespace {

/// Calls the next function of this name. Whoever is first finds it for all.
#define NEXT(name, ...)                                                             \
    ([&] {                                                                          \
        static decltype(&::name) known = nullptr;                                   \
        if (known == nullptr) {                                                     \
            known = reinterpret_cast<decltype(&::name)>(::dlsym(RTLD_NEXT, #name)); \
        }                                                                           \
        return known(__VA_ARGS__);                                                  \
    }())

#define POINT(result, name, parameters, ...) \
    INTERPOSED result name parameters {      \
        if (IS_MODULES) {                    \
            turns::offer(#name);             \
        }                                    \
        return NEXT(name, __VA_ARGS__);      \
    }

/// Who ends while holding a lock looks at the conditions of those that wait for it last of all.
bool isFree(const pthread_mutex_t& mutex) {
    const int owner = mutex.__data.__lock & FUTEX_TID_MASK;
    const agent::Thread* const self = agent::Thread::current();
    return owner == 0 || (owner == ::gettid() && self != nullptr && !self->isActive());
}

/// Locks that are tried for. That one is held, or is free again, tells those something who do not wait for it, so what
/// has no lock may stand on either side; of others nobody can tell when they are given back.
std::set<const pthread_mutex_t*> roles;

/// How often the calling thread has taken the lock that is out.
thread_local int taken = 0;

/// Comes behind each instruction as long as it is taken.
void step(int /*signal*/, siginfo_t* /*info*/, [[maybe_unused]] void* context) {
#ifdef REG_RIP
    constexpr greg_t kTrap = 0x100;
    auto& registers = static_cast<ucontext_t*>(context)->uc_mcontext.gregs;
    registers[REG_EFL] = taken > 0 ? registers[REG_EFL] | kTrap : registers[REG_EFL] & ~kTrap;
    if (taken > 0 && sim::isModuleCall(reinterpret_cast<void*>(registers[REG_RIP]))) {
        turns::offer("an instruction");
    }
#endif
}

bool isOut(const pthread_mutex_t* mutex) {
    return turns::without < turns::locks.size() && turns::locks[turns::without] == mutex;
}

int tryLock(pthread_mutex_t* mutex) {
    if (!isOut(mutex)) {
        return NEXT(pthread_mutex_trylock, mutex);
    }
    if (++taken == 1 && turns::steps) {
        struct sigaction action {};
        action.sa_sigaction = step;
        action.sa_flags = SA_SIGINFO;
        ::sigaction(SIGTRAP, &action, nullptr);
        std::raise(SIGTRAP);
    }
    return 0;
}

}  // namespace

extern "C" {

INTERPOSED int pthread_mutex_init(pthread_mutex_t* mutex, const pthread_mutexattr_t* attributes) noexcept {
    if (attributes != nullptr) {  // the module's; no others have any
        turns::locks.push_back(mutex);
    }
    return NEXT(pthread_mutex_init, mutex, attributes);
}

INTERPOSED int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept {
    if (!IS_MODULES) {
        return NEXT(pthread_mutex_lock, mutex);
    }
    turns::offer("lock");
    for (;;) {
        const int result = tryLock(mutex);
        if (result != EBUSY) {
            return result;
        }
        turns::scheduler->wait(agent::Thread::kForever, [mutex] { return isFree(*mutex); });
    }
}

INTERPOSED int pthread_mutex_trylock(pthread_mutex_t* mutex) noexcept {
    if (!IS_MODULES) {
        return NEXT(pthread_mutex_trylock, mutex);
    }
    roles.insert(mutex);
    turns::offer("trylock");
    const int result = tryLock(mutex);
    turns::offer("trylock's end");
    return result;
}

INTERPOSED int pthread_mutex_unlock(pthread_mutex_t* mutex) noexcept {
    if (!IS_MODULES) {
        return NEXT(pthread_mutex_unlock, mutex);
    }
    const bool isRole = roles.contains(mutex);
    if (isRole) {
        turns::offer("unlock");
    }
    int result = 0;
    turns::scheduler->change([&] { result = isOut(mutex) ? --taken, 0 : NEXT(pthread_mutex_unlock, mutex); });
    if (isRole) {
        turns::offer("unlock's end");
    }
    return result;
}

INTERPOSED int nanosleep(const timespec* time, timespec* left) {
    if (!IS_MODULES) {
        return NEXT(nanosleep, time, left);
    }
    turns::scheduler->wait(std::chrono::milliseconds(time->tv_sec * 1000 + time->tv_nsec / 1000000),
                           [] { return false; });
    return 0;
}

/// Whoever waits here waits besides the one who writes.
INTERPOSED void flockfile(FILE* stream) noexcept {
    if (!IS_MODULES) {
        NEXT(flockfile, stream);
    } else if (::ftrylockfile(stream) != 0) {
        turns::scheduler->wait(agent::Thread::kForever, [] { return false; });
    }
}

INTERPOSED int poll(pollfd* files, nfds_t count, int time) {
    if (IS_MODULES && time < 0) {
        turns::scheduler->wait(agent::Thread::kForever, turns::isRead);
    }
    return NEXT(poll, files, count, time);
}

INTERPOSED time_t time(time_t* result) noexcept {
    const time_t now = std::chrono::floor<std::chrono::seconds>(sim::shownTime()).count();
    return result == nullptr ? now : *result = now;
}

/// std::chrono::steady_clock::now, in nanoseconds.
INTERPOSED std::int64_t steadyNow() __asm__("_ZNSt6chrono3_V212steady_clock3nowEv");
std::int64_t steadyNow() {
    if (IS_MODULES) {
        return std::chrono::nanoseconds(sim::shownTime()).count();
    }
    timespec now = {};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return std::int64_t{now.tv_sec} * 1000000000 + now.tv_nsec;
}

INTERPOSED int openat(int directory, const char* path, int flags, ...) {
    if (IS_MODULES) {
        turns::offer("openat");
    }
    std::va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return NEXT(openat, directory, path, flags, mode);
}

/// Nothing is to outlast this machine.
INTERPOSED int fsync(int /*descriptor*/) {
    turns::offer("fsync");
    return 0;
}

POINT(ssize_t, pread, (int file, void* data, std::size_t size, off_t offset), file, data, size, offset)
POINT(ssize_t, pwrite, (int file, const void* data, std::size_t size, off_t offset), file, data, size, offset)
POINT(ssize_t, write, (int file, const void* data, std::size_t size), file, data, size)
POINT(int, ftruncate, (int file, off_t size) noexcept, file, size)
POINT(int, unlink, (const char* path) noexcept, path)

}  // extern "C"
