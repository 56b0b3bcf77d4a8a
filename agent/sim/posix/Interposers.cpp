// System functions that the module must find here instead of in the C library: the program stands first in
// the order in which symbols are looked up, also with a sanitizer's or a preloaded library in between. Where times
// and sizes of files have 64 bits only in functions of other names (`__time64`, `open64`), the C library's headers
// give ours these names, too.
#include "sim/posix/ModuleFiles.h"
#include "sim/posix/Timespec.h"
#include "sim/time/ProcessTime.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdarg>
#include <ctime>
#include <type_traits>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#define INTERPOSED __attribute__((visibility("default"), noinline))

namespace {

/// The function that would have been found without `own`, by the name that this one has to the loader.
template <typename Function>
Function* next(std::atomic<Function*>& known, std::type_identity_t<Function>* own) {
    Function* function = known;
    if (function == nullptr) {
        Dl_info symbol = {};
        ::dladdr(reinterpret_cast<const void*>(own), &symbol);
        function = reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, symbol.dli_sname));
        known = function;
    }
    return function;
}

/// A file that the module made or wrote was modified at the simulation's present.
void stamp(int descriptor) {
    const int saved = errno;
    struct stat state = {};
    if (::fstat(descriptor, &state) == 0 && S_ISREG(state.st_mode)) {
        const timespec times[2] = {{0, UTIME_OMIT}, sim::timespecOf(sim::shownTime())};
        ::futimens(descriptor, times);
    }
    errno = saved;
}

/// What a call answered that may have written for `caller`.
template <typename Result>
Result stamped(Result result, int descriptor, const void* caller) {
    if (result >= 0 && sim::isModuleCall(caller)) {
        stamp(descriptor);
    }
    return result;
}

bool exists(int directory, const char* path) {
    struct stat state = {};
    return ::fstatat(directory, path, &state, 0) == 0;
}

/// Opens a file with `open`, for `caller`.
template <typename Open>
int openFile(const void* caller, int directory, const char* path, int flags, const Open& open) {
    const bool isModules = sim::isModuleCall(caller);
    const bool changes =
        isModules && ((flags & O_TRUNC) != 0 || ((flags & O_CREAT) != 0 && !exists(directory, path)));
    const int descriptor = open();
    if (descriptor >= 0 && isModules) {
        sim::noteOpened(descriptor);
        if (changes) {
            stamp(descriptor);
        }
    }
    return descriptor;
}

}  // namespace

extern "C" {

INTERPOSED time_t time(time_t* result) noexcept {
    const time_t now = std::chrono::floor<std::chrono::seconds>(sim::shownTime()).count();
    if (result != nullptr) {
        *result = now;
    }
    return now;
}

INTERPOSED int open(const char* path, int flags, ...) {
    std::va_list arguments;
    va_start(arguments, flags);
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): va_start stands above
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    static std::atomic<int (*)(const char*, int, ...)> known = nullptr;
    return openFile(__builtin_return_address(0), AT_FDCWD, path, flags,
                    [&] { return next(known, ::open)(path, flags, mode); });
}

INTERPOSED int openat(int directory, const char* path, int flags, ...) {
    std::va_list arguments;
    va_start(arguments, flags);
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): va_start stands above
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    static std::atomic<int (*)(int, const char*, int, ...)> known = nullptr;
    return openFile(__builtin_return_address(0), directory, path, flags,
                    [&] { return next(known, ::openat)(directory, path, flags, mode); });
}

INTERPOSED ssize_t write(int descriptor, const void* data, size_t size) {
    static std::atomic<ssize_t (*)(int, const void*, size_t)> known = nullptr;
    return stamped(next(known, ::write)(descriptor, data, size), descriptor, __builtin_return_address(0));
}

INTERPOSED ssize_t pwrite(int descriptor, const void* data, size_t size, off_t offset) {
    static std::atomic<ssize_t (*)(int, const void*, size_t, off_t)> known = nullptr;
    return stamped(next(known, ::pwrite)(descriptor, data, size, offset), descriptor,
                   __builtin_return_address(0));
}

INTERPOSED int ftruncate(int descriptor, off_t size) noexcept {
    static std::atomic<int (*)(int, off_t)> known = nullptr;
    return stamped(next(known, ::ftruncate)(descriptor, size), descriptor, __builtin_return_address(0));
}

}  // extern "C"
