#include "platform/posix/Descriptor.h"

#include "platform/ThreadEnd.h"

#include <algorithm>
#include <atomic>
#include <cerrno>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform::posix {
namespace {

constexpr int kFirstFreeDescriptor = 3;
constexpr mode_t kFileMode = 0666;  // less the process's umask

std::atomic<bool> sizeIsLimited;

int flagsOf(OpenMode mode) noexcept {
    switch (mode) {
        case OpenMode::Read:
            return O_RDONLY;
        case OpenMode::ReadWrite:
            return O_RDWR;
        case OpenMode::Create:
            return O_RDWR | O_CREAT;
        case OpenMode::Append:
            return O_WRONLY | O_APPEND | O_CREAT;
    }
    return O_RDONLY;
}

}  // namespace

bool toNative(std::string_view path, PathBuffer& native) noexcept {
    if (path.size() >= native.size()) {
        errno = ENAMETOOLONG;
        return false;
    }
    if (path.find('\0') != std::string_view::npos) {
        errno = EINVAL;
        return false;
    }
    *std::replace_copy(path.begin(), path.end(), native.begin(), '\\', '/') = '\0';
    return true;
}

int openDescriptor(int directory, const char* path, int flags) noexcept {
    int descriptor = -1;
    do {
        // Not blocking: a FIFO in the file's place must not hold up the host.
        descriptor = ::openat(directory, path, flags | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, kFileMode);
    } while (descriptor < 0 && errno == EINTR);
    if (descriptor >= 0 && descriptor < kFirstFreeDescriptor) {
        const int moved = ::fcntl(descriptor, F_DUPFD_CLOEXEC, kFirstFreeDescriptor);
        const int error = errno;
        ::close(descriptor);
        errno = error;
        return moved;
    }
    return descriptor;
}

int openRegular(int directory, const char* path, OpenMode mode) noexcept {
    const KeepThread keep;
    rlimit limit{};
    sizeIsLimited = ::getrlimit(RLIMIT_FSIZE, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY;
    struct stat status {};
    // Before it is opened, which other things could take for an order.
    if (::fstatat(directory, path, &status, 0) == 0 && !S_ISREG(status.st_mode)) {
        errno = EINVAL;
        return -1;
    }
    const int descriptor = openDescriptor(directory, path, flagsOf(mode));
    if (descriptor < 0) {
        return -1;
    }
    int error = EINVAL;
    if (::fstat(descriptor, &status) != 0) {
        error = errno;
    } else if (S_ISREG(status.st_mode)) {
        return descriptor;
    }
    ::close(descriptor);
    errno = error;
    return -1;
}

bool isSizeLimited() noexcept {
    return sizeIsLimited;
}

}  // namespace platform::posix
