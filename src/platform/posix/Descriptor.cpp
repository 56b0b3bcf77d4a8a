#include "platform/posix/Descriptor.h"

#include "platform/ThreadEnd.h"

#include <algorithm>
#include <atomic>
#include <cerrno>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
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

Look lookOf(mode_t mode, std::int64_t size, std::uint64_t device, std::uint64_t number, uid_t owner,
            gid_t group) noexcept {
    if (!S_ISREG(mode)) {
        Look other;
        other.kind = Look::Kind::Other;
        return other;
    }
    return {Look::Kind::Regular, size, device, number, mode, owner, group};
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

Look lookAt(int directory, const char* path, int flags) noexcept {
    // Without the times: a look at them makes the next write note a new one in the file's record.
    constexpr unsigned int asked = STATX_TYPE | STATX_MODE | STATX_INO | STATX_SIZE | STATX_UID | STATX_GID;
    struct statx seen {};
    if (::statx(directory, path, flags | AT_STATX_FORCE_SYNC, asked, &seen) == 0) {
        return lookOf(seen.stx_mode, static_cast<std::int64_t>(seen.stx_size),
                      gnu_dev_makedev(seen.stx_dev_major, seen.stx_dev_minor), seen.stx_ino, seen.stx_uid,
                      seen.stx_gid);
    }
    struct stat status {};
    // Where the host is confined to the calls that its confinement knows, this one may be too new.
    if ((errno == ENOSYS || errno == EPERM) && ::fstatat(directory, path, &status, flags) == 0) {
        return lookOf(status.st_mode, status.st_size, status.st_dev, status.st_ino, status.st_uid,
                      status.st_gid);
    }
    Look none;
    none.kind = errno == ENOENT ? Look::Kind::Missing : Look::Kind::Unknown;
    return none;
}

bool isSizeLimited() noexcept {
    return sizeIsLimited;
}

}  // namespace platform::posix
