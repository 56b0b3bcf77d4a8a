#include "platform/File.h"

#include "platform/ThreadEnd.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/WriteSignals.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <optional>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {
namespace {

bool writeAllAt(int descriptor, std::string_view text, off_t position) noexcept {
    const KeepThread keep;
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

File File::open(const std::string& path, OpenMode mode) noexcept {
    posix::PathBuffer native;
    return posix::toNative(path, native) ? File(posix::openRegular(AT_FDCWD, native.data(), mode)) : File();
}

void File::close() noexcept {
    if (isOpen()) {
        const KeepThread keep;
        ::close(std::exchange(descriptor_, kNoFile));
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

std::optional<std::string> File::readWhole(std::size_t limit) const {
    const off_t end = ::lseek(descriptor_, 0, SEEK_END);
    if (end < 0) {
        return std::nullopt;
    }
    std::string contents(
        static_cast<std::size_t>(std::min<std::uint64_t>(static_cast<std::uint64_t>(end), limit)), '\0');
    if (readStart(contents.data(), contents.size()) < contents.size()) {
        return std::nullopt;
    }
    return contents;
}

std::size_t File::readStart(char* buffer, std::size_t size) const noexcept {
    const KeepThread keep;
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
    const KeepThread keep;
    ssize_t count = -1;
    do {
        count = ::pread(descriptor_, buffer, size, static_cast<off_t>(position));
    } while (count < 0 && errno == EINTR);
    return count;
}

std::optional<std::size_t> File::append(std::string_view text) noexcept {
    // Where the last write ended, or -1 when another process has written behind it.
    const auto ownEnd = [this] {
        const off_t position = ::lseek(descriptor_, 0, SEEK_CUR);
        return position == ::lseek(descriptor_, 0, SEEK_END) ? position : -1;
    };
    std::optional<posix::WriteSignals> signals;
    if (posix::isSizeLimited()) {
        signals.emplace();
    }
    std::size_t done = 0;
    while (done < text.size()) {
        if (done > 0 && ownEnd() < 0) {
            return std::nullopt;
        }
        const ssize_t written = ::write(descriptor_, text.data() + done, text.size() - done);
        if (written > 0) {
            done += static_cast<std::size_t>(written);
        } else if (written == 0 || errno != EINTR) {
            const off_t end = done > 0 ? ownEnd() : -1;
            if (end >= 0) {
                truncate(end - static_cast<off_t>(done));
            }
            return std::nullopt;
        }
    }
    return done;
}

bool File::overwriteStart(std::string_view record) noexcept {
    std::array<char, kLargestRecord> old{};
    if (record.size() > old.size()) {
        return false;
    }
    const posix::WriteSignals signals;
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
    const KeepThread keep;
    return ::fsync(descriptor_) == 0;
}

Look File::look() const noexcept {
    return posix::lookAt(descriptor_, "", AT_EMPTY_PATH);
}

bool File::isSameFile(const File& other) const noexcept {
    struct stat mine {};
    struct stat others {};
    return ::fstat(descriptor_, &mine) == 0 && ::fstat(other.descriptor_, &others) == 0 &&
           mine.st_dev == others.st_dev && mine.st_ino == others.st_ino;
}

bool removeFile(const std::string& path) noexcept {
    posix::PathBuffer native;
    return posix::toNative(path, native) && ::unlink(native.data()) == 0;
}

std::string absolutePath(const std::string& path) {
    std::string native = path;
    std::replace(native.begin(), native.end(), '\\', '/');
    if (native.rfind('/', 0) == 0) {
        return native;
    }
    posix::PathBuffer directory;
    if (::getcwd(directory.data(), directory.size()) == nullptr) {
        return native;  // there is no directory that it could lead to
    }
    return directory.data() + ('/' + native);
}

void syncName(const std::string& path) noexcept {
    const KeepThread keep;
    posix::PathBuffer native;
    if (!posix::toNative(path, native)) {
        return;
    }
    const std::size_t separator = lastSeparator(path);
    if (separator == std::string::npos) {
        native = {"."};
    } else {
        native[separator == 0 ? 1 : separator] = '\0';
    }
    const int directory = posix::openDescriptor(AT_FDCWD, native.data(), O_RDONLY | O_DIRECTORY);
    if (directory >= 0) {
        ::fsync(directory);
        ::close(directory);
    }
}

}  // namespace platform
