#include "platform/posix/Descriptor.h"

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform::posix {
namespace {

constexpr int kFirstFreeDescriptor = 3;
constexpr mode_t kFileMode = 0666;  // less the process's umask

/// In a host that was started with standard descriptors closed, keeps them taken while a file is opened for
/// writing: otherwise output of the host could land in that file before its descriptor is moved away.
class StandardDescriptorsTaken final {
  public:
    StandardDescriptorsTaken() noexcept {
        int descriptor = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
        while (descriptor >= 0 && descriptor < kFirstFreeDescriptor) {
            taken_[count_++] = descriptor;
            descriptor = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
        }
        if (descriptor >= 0) {
            ::close(descriptor);
        }
    }
    StandardDescriptorsTaken(const StandardDescriptorsTaken&) = delete;
    StandardDescriptorsTaken& operator=(const StandardDescriptorsTaken&) = delete;
    ~StandardDescriptorsTaken() {
        const int error = errno;
        while (count_ > 0) {
            ::close(taken_[--count_]);
        }
        errno = error;
    }

  private:
    std::array<int, kFirstFreeDescriptor> taken_{};
    std::size_t count_ = 0;
};

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
    int descriptor = -1;
    if (mode == OpenMode::Read) {
        descriptor = openDescriptor(directory, path, flagsOf(mode));
    } else {
        const StandardDescriptorsTaken taken;
        descriptor = openDescriptor(directory, path, flagsOf(mode));
    }
    if (descriptor < 0) {
        return -1;
    }
    struct stat status {};
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

}  // namespace platform::posix
