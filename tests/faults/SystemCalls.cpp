// Calls into the operating system. A failing one leaves the system as a real failure does: a descriptor is
// closed all the same, a mutex whose last owner died is held by its new one.
#include "Faults.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>

#include <dirent.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

using faults::faultOf;
using faults::kNone;
using faults::kShort;

namespace {

template <typename Result>
Result failed(int error, Result result) noexcept {
    errno = error;
    return result;
}

/// Half of what was asked for, when the fault says so.
std::size_t shortened(std::size_t size, int fault) noexcept {
    return fault == kShort && size > 1 ? size / 2 : size;
}

/// Only a robust mutex can fail to be locked; that it is one stands in its kind.
bool isRobust(const pthread_mutex_t& mutex) noexcept {
    constexpr int kRobust = 16;
    return (mutex.__data.__kind & kRobust) != 0;
}

/// Calls the next function of this name with the given arguments.
#define NEXT(name, ...)                                 \
    ([&] {                                              \
        static decltype(&::name) known = nullptr;       \
        return faults::next(known, #name)(__VA_ARGS__); \
    }())

/// A function that either fails with `failure` or calls on.
#define FAILING(result, name, failure, parameters, ...)                                   \
    INTERPOSED result name parameters {                                                   \
        const int fault = faultOf(faults::numberOf(#name));                               \
        return fault != kNone ? failed<result>(fault, failure) : NEXT(name, __VA_ARGS__); \
    }

/// The same for functions that answer the error.
#define ANSWERING(name, kind, parameters, ...)                   \
    INTERPOSED int name parameters noexcept {                    \
        const int fault = faultOf(faults::numberOf(kind));       \
        return fault != kNone ? fault : NEXT(name, __VA_ARGS__); \
    }

}  // namespace

extern "C" {

INTERPOSED int open(const char* path, int flags, ...) {
    const int fault = faultOf(faults::numberOf("open"));
    std::va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return fault != kNone ? failed(fault, -1) : NEXT(open, path, flags, mode);
}

INTERPOSED int openat(int directory, const char* path, int flags, ...) {
    const int fault = faultOf(faults::numberOf("openat"));
    std::va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return fault != kNone ? failed(fault, -1) : NEXT(openat, directory, path, flags, mode);
}

INTERPOSED int fcntl(int descriptor, int command, ...) {
    const int fault = faultOf(faults::numberOf("fcntl"));
    std::va_list arguments;
    va_start(arguments, command);
    void* const argument = va_arg(arguments, void*);
    va_end(arguments);
    return fault != kNone ? failed(fault, -1) : NEXT(fcntl, descriptor, command, argument);
}

INTERPOSED int close(int descriptor) {
    const int fault = faultOf(faults::numberOf("close"));
    const int result = NEXT(close, descriptor);
    return fault != kNone ? failed(fault, -1) : result;
}

FAILING(off_t, lseek, -1, (int descriptor, off_t offset, int whence) noexcept, descriptor, offset, whence)
FAILING(int, fstat, -1, (int descriptor, struct stat* status) noexcept, descriptor, status)
FAILING(int, fsync, -1, (int descriptor), descriptor)
FAILING(int, renameat2, -1,
        (int fromDirectory, const char* from, int toDirectory, const char* to, unsigned int flags) noexcept,
        fromDirectory, from, toDirectory, to, flags)
FAILING(int, renameat, -1, (int fromDirectory, const char* from, int toDirectory, const char* to) noexcept,
        fromDirectory, from, toDirectory, to)
FAILING(int, linkat, -1,
        (int fromDirectory, const char* from, int toDirectory, const char* to, int flags) noexcept,
        fromDirectory, from, toDirectory, to, flags)
FAILING(int, unlinkat, -1, (int directory, const char* name, int flags) noexcept, directory, name, flags)
FAILING(int, fstatat, -1, (int directory, const char* name, struct stat* status, int flags) noexcept,
        directory, name, status, flags)
FAILING(int, statx, -1,
        (int directory, const char* name, int flags, unsigned int mask, struct statx* seen) noexcept,
        directory, name, flags, mask, seen)
FAILING(int, faccessat, -1, (int directory, const char* name, int mode, int flags) noexcept, directory, name,
        mode, flags)
FAILING(DIR*, fdopendir, nullptr, (int descriptor), descriptor)
FAILING(dirent*, readdir, nullptr, (DIR * stream), stream)
FAILING(int, system, -1, (const char* command), command)

INTERPOSED std::size_t fwrite_unlocked(const void* text, std::size_t size, std::size_t count, FILE* stream) {
    const int fault = faultOf(faults::numberOf("fwrite"));
    if (faults::isModules()) {
        faults::note('E', {static_cast<const char*>(text), size * count});
    }
    return fault != kNone ? failed<std::size_t>(fault, 0) : NEXT(fwrite_unlocked, text, size, count, stream);
}

INTERPOSED int closedir(DIR* stream) {
    const int fault = faultOf(faults::numberOf("closedir"));
    const int result = NEXT(closedir, stream);
    return fault != kNone ? failed(fault, -1) : result;
}

INTERPOSED int unlink(const char* path) noexcept {
    const int fault = faultOf(faults::numberOf("unlink"));
    const bool noted = faults::isModules();
    const int result = fault != kNone ? failed(fault, -1) : NEXT(unlink, path);
    if (noted && result == 0) {
        faults::note('U', path);
    }
    return result;
}

INTERPOSED ssize_t pread(int descriptor, void* data, std::size_t size, off_t offset) {
    const int fault = faultOf(faults::numberOf("pread"));
    return fault > 0 ? failed<ssize_t>(fault, -1)
                     : NEXT(pread, descriptor, data, shortened(size, fault), offset);
}

INTERPOSED ssize_t pwrite(int descriptor, const void* data, std::size_t size, off_t offset) {
    const int fault = faultOf(faults::numberOf("pwrite"));
    const bool noted = faults::isModules() && offset == 0;
    const ssize_t written = fault > 0 ? failed<ssize_t>(fault, -1)
                                      : NEXT(pwrite, descriptor, data, shortened(size, fault), offset);
    if (noted) {
        faults::note(written == static_cast<ssize_t>(size) ? 'P' : 'p',
                     {static_cast<const char*>(data), size});
    }
    return written;
}

INTERPOSED ssize_t write(int descriptor, const void* data, std::size_t size) {
    const int fault = faultOf(faults::numberOf("write"));
    const bool noted = faults::isModules();
    const ssize_t written =
        fault > 0 ? failed<ssize_t>(fault, -1) : NEXT(write, descriptor, data, shortened(size, fault));
    if (noted && written > 0) {
        faults::note('W', {static_cast<const char*>(data), static_cast<std::size_t>(written)});
    }
    return written;
}

INTERPOSED int ftruncate(int descriptor, off_t size) noexcept {
    const int fault = faultOf(faults::numberOf("ftruncate"));
    const bool noted = faults::isModules() && (::syscall(SYS_fcntl, descriptor, F_GETFL) & O_APPEND) != 0;
    const int result = fault != kNone ? failed(fault, -1) : NEXT(ftruncate, descriptor, size);
    if (noted && result == 0) {
        faults::note('T', {});
    }
    return result;
}

ANSWERING(pthread_mutexattr_init, "mutexattr-init", (pthread_mutexattr_t * attributes), attributes)
ANSWERING(pthread_mutex_init, "mutex-init", (pthread_mutex_t * mutex, const pthread_mutexattr_t* attributes),
          mutex, attributes)

INTERPOSED int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept {
    const bool robust = isRobust(*mutex);
    const int fault = robust ? faultOf(faults::numberOf("mutex-lock")) : kNone;
    if (fault != kNone && fault != EOWNERDEAD) {
        return fault;
    }
    const int result = NEXT(pthread_mutex_lock, mutex);
    return result == 0 ? fault : result;
}

INTERPOSED int pthread_mutex_trylock(pthread_mutex_t* mutex) noexcept {
    const bool robust = isRobust(*mutex);
    const int fault = robust ? faultOf(faults::numberOf("mutex-trylock")) : kNone;
    if (fault != kNone && fault != EOWNERDEAD) {
        return fault;
    }
    const int result = NEXT(pthread_mutex_trylock, mutex);
    return result == 0 ? fault : result;
}

INTERPOSED int pthread_mutex_unlock(pthread_mutex_t* mutex) noexcept {
    const bool robust = isRobust(*mutex);
    const int fault = robust ? faultOf(faults::numberOf("mutex-unlock")) : kNone;
    const int result = NEXT(pthread_mutex_unlock, mutex);
    return result == 0 ? fault : result;
}
}
