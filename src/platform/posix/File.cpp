#include "platform/File.h"

#include "platform/posix/Descriptor.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {
namespace {

constexpr std::size_t kLargestRecord = 1024;

bool writeAllAt(int descriptor, std::string_view text, off_t position) noexcept {
    while (!text.empty()) {
        const ssize_t written = ::pwrite(descriptor, text.data(), text.size(), position);
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            return false;
        }
        text.remove_prefix(static_cast<std::size_t>(written));
        position += written;
    }
    return true;
}

}  // namespace

File::File(File&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}

File& File::operator=(File&& other) noexcept {
    if (this != &other) {
        close();
        descriptor_ = std::exchange(other.descriptor_, -1);
    }
    return *this;
}

File File::open(const std::string& path, OpenMode mode) noexcept {
    posix::PathBuffer native;
    return posix::toNative(path, native) ? File(posix::openRegular(AT_FDCWD, native.data(), mode)) : File();
}

void File::close() noexcept {
    if (isOpen()) {
        ::close(std::exchange(descriptor_, -1));
    }
}

std::int64_t File::size() const noexcept {
    const off_t end = ::lseek(descriptor_, 0, SEEK_END);
    return end < 0 ? 0 : end;
}

std::optional<std::int64_t> File::modifiedAt() const noexcept {
    struct stat status {};
    return ::fstat(descriptor_, &status) == 0 ? std::optional<std::int64_t>(status.st_mtime) : std::nullopt;
}

std::size_t File::readStart(char* buffer, std::size_t size) const noexcept {
    std::size_t length = 0;
    while (length < size) {
        const ssize_t count =
            ::pread(descriptor_, buffer + length, size - length, static_cast<off_t>(length));
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            break;
        }
        length += static_cast<std::size_t>(count);
    }
    return length;
}

std::ptrdiff_t File::readAt(std::uint64_t position, char* buffer, std::size_t size) const noexcept {
    ssize_t count = -1;
    do {
        count = ::pread(descriptor_, buffer, size, static_cast<off_t>(position));
    } while (count < 0 && errno == EINTR);
    return count;
}

bool File::append(std::string_view text) noexcept {
    std::size_t done = 0;
    while (done < text.size()) {
        const ssize_t written = ::write(descriptor_, text.data() + done, text.size() - done);
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            if (done > 0) {
                const std::int64_t end = size();
                truncate(end - static_cast<std::int64_t>(done));
            }
            return false;
        }
        done += static_cast<std::size_t>(written);
    }
    return true;
}

bool File::overwriteStart(std::string_view record) noexcept {
    std::array<char, kLargestRecord> old{};
    if (record.size() > old.size()) {
        return false;
    }
    const std::size_t oldLength = readStart(old.data(), record.size());
    if (writeAllAt(descriptor_, record, 0)) {
        return true;
    }
    writeAllAt(descriptor_, {old.data(), oldLength}, 0);
    if (oldLength < record.size()) {
        truncate(static_cast<std::int64_t>(oldLength));
    }
    return false;
}

bool File::truncate(std::int64_t size) noexcept {
    return ::ftruncate(descriptor_, size) == 0;
}

bool File::sync() noexcept {
    return ::fsync(descriptor_) == 0;
}

bool File::isSameFile(const File& other) const noexcept {
    struct stat mine {};
    struct stat others {};
    return ::fstat(descriptor_, &mine) == 0 && ::fstat(other.descriptor_, &others) == 0 &&
           mine.st_dev == others.st_dev && mine.st_ino == others.st_ino;
}

bool renameFile(const std::string& from, const std::string& to) noexcept {
    posix::PathBuffer nativeFrom;
    posix::PathBuffer nativeTo;
    if (!posix::toNative(from, nativeFrom) || !posix::toNative(to, nativeTo)) {
        return false;
    }
    if (::renameat2(AT_FDCWD, nativeFrom.data(), AT_FDCWD, nativeTo.data(), RENAME_NOREPLACE) == 0) {
        return true;
    }
    if (errno != EINVAL && errno != ENOSYS) {
        return false;
    }
    // A file system without that flag: a second name that must not exist yet, then the first one goes.
    if (::link(nativeFrom.data(), nativeTo.data()) != 0) {
        return false;
    }
    if (::unlink(nativeFrom.data()) != 0) {
        const int error = errno;
        ::unlink(nativeTo.data());
        errno = error;
        return false;
    }
    return true;
}

bool removeFile(const std::string& path) noexcept {
    posix::PathBuffer native;
    return posix::toNative(path, native) && ::unlink(native.data()) == 0;
}

std::size_t lastSeparator(std::string_view path) noexcept {
    return path.find_last_of("/\\");
}

}  // namespace platform
