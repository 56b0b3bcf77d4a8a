#include "platform/File.h"

#include "platform/windows/Path.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <limits>
#include <memory>
#include <new>
#include <utility>

namespace platform {
namespace {

constexpr std::uint64_t kBehindAll = std::numeric_limits<std::uint64_t>::max();  // as a position to write at
constexpr char kNowhere[] = "?\\";  // no file has that sign in its path

OVERLAPPED positionOf(std::uint64_t position) noexcept {
    constexpr unsigned halfBits = 32;
    OVERLAPPED overlapped{};
    overlapped.Offset = static_cast<DWORD>(position);
    overlapped.OffsetHigh = static_cast<DWORD>(position >> halfBits);
    return overlapped;
}

/// In one write: the number of bytes written.
std::size_t writeAt(HANDLE file, std::string_view text, std::uint64_t position) noexcept {
    OVERLAPPED overlapped = positionOf(position);
    DWORD written = 0;
    const bool done =
        ::WriteFile(file, text.data(), static_cast<DWORD>(text.size()), &written, &overlapped) != FALSE;
    return done ? written : 0;
}

/// Position behind the last read or write, -1 when there is none.
std::int64_t positionIn(HANDLE file) noexcept {
    LARGE_INTEGER position{};
    return ::SetFilePointerEx(file, {}, &position, FILE_CURRENT) != FALSE ? position.QuadPart : -1;
}

}  // namespace

File File::open(const std::string& path, OpenMode mode) noexcept {
    errno = ENOENT;
    windows::PathBuffer native;
    return windows::toNative(path, native) ? File(windows::openRegular(native.data(), mode)) : File();
}

void File::close() noexcept {
    if (isOpen()) {
        ::CloseHandle(windows::systemHandle(std::exchange(descriptor_, kNoFile)));
    }
}

std::int64_t File::size() const noexcept {
    LARGE_INTEGER size{};
    return ::GetFileSizeEx(windows::systemHandle(descriptor_), &size) != FALSE ? size.QuadPart : 0;
}

std::optional<std::int64_t> File::modifiedAt() const noexcept {
    FILETIME written{};
    if (::GetFileTime(windows::systemHandle(descriptor_), nullptr, nullptr, &written) == FALSE) {
        return std::nullopt;
    }
    return windows::secondsOf(written);
}

std::optional<std::string> File::readWhole(std::size_t limit) const {
    LARGE_INTEGER size{};
    if (::GetFileSizeEx(windows::systemHandle(descriptor_), &size) == FALSE) {
        return std::nullopt;
    }
    const auto length = static_cast<std::size_t>(
        std::min(static_cast<std::uint64_t>(size.QuadPart), static_cast<std::uint64_t>(limit)));
    std::string contents(length, '\0');
    if (readStart(contents.data(), contents.size()) < contents.size()) {
        return std::nullopt;
    }
    return contents;
}

std::size_t File::readStart(char* buffer, std::size_t size) const noexcept {
    std::size_t length = 0;
    while (length < size) {
        const std::ptrdiff_t count = readAt(length, buffer + length, size - length);
        if (count <= 0) {
            break;
        }
        length += static_cast<std::size_t>(count);
    }
    return length;
}

std::ptrdiff_t File::readAt(std::uint64_t position, char* buffer, std::size_t size) const noexcept {
    constexpr std::size_t mostAtOnce = 1U << 30U;
    OVERLAPPED overlapped = positionOf(position);
    DWORD count = 0;
    if (::ReadFile(windows::systemHandle(descriptor_), buffer, static_cast<DWORD>(std::min(size, mostAtOnce)),
                   &count, &overlapped) == FALSE) {
        return ::GetLastError() == ERROR_HANDLE_EOF ? 0 : -1;
    }
    return static_cast<std::ptrdiff_t>(count);
}

std::optional<std::size_t> File::append(std::string_view text) noexcept {
    // A text file of this system ends its lines with two characters.
    const auto lineEnds = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
    std::unique_ptr<char[]> translated;
    if (lineEnds > 0) {
        translated.reset(new (std::nothrow) char[text.size() + lineEnds]);
        if (translated == nullptr) {
            return std::nullopt;
        }
        char* end = translated.get();
        for (const char character : text) {
            if (character == '\n') {
                *end++ = '\r';
            }
            *end++ = character;
        }
        text = {translated.get(), text.size() + lineEnds};
    }
    const HANDLE file = windows::systemHandle(descriptor_);
    const std::size_t written = writeAt(file, text, kBehindAll);
    if (written == text.size()) {
        return written;
    }
    if (written > 0 && positionIn(file) == size()) {
        truncate(size() - static_cast<std::int64_t>(written));
    }
    return std::nullopt;
}

bool File::overwriteStart(std::string_view record) noexcept {
    std::array<char, kLargestRecord> old{};
    if (record.size() > old.size()) {
        return false;
    }
    const HANDLE file = windows::systemHandle(descriptor_);
    const std::size_t oldLength = readStart(old.data(), record.size());
    if (writeAt(file, record, 0) == record.size()) {
        return true;
    }
    writeAt(file, {old.data(), oldLength}, 0);
    if (oldLength < record.size()) {
        truncate(static_cast<std::int64_t>(oldLength));
    }
    return false;
}

bool File::truncate(std::int64_t size) noexcept {
    // Through a handle of its own: one that appends cannot do it.
    const HANDLE file = ::ReOpenFile(windows::systemHandle(descriptor_), GENERIC_WRITE,
                                     FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, 0);
    if (file == INVALID_HANDLE_VALUE) {
        return false;
    }
    LARGE_INTEGER end{};
    end.QuadPart = size;
    const bool done =
        ::SetFilePointerEx(file, end, nullptr, FILE_BEGIN) != FALSE && ::SetEndOfFile(file) != FALSE;
    ::CloseHandle(file);
    return done;
}

bool File::sync() noexcept {
    return ::FlushFileBuffers(windows::systemHandle(descriptor_)) != FALSE;
}

Look File::look() const noexcept {
    constexpr unsigned halfBits = 32;
    BY_HANDLE_FILE_INFORMATION seen{};
    Look look;
    if (::GetFileInformationByHandle(windows::systemHandle(descriptor_), &seen) != FALSE) {
        look.kind = Look::Kind::Regular;
        look.size = static_cast<std::int64_t>(std::uint64_t{seen.nFileSizeHigh} << halfBits |
                                              std::uint64_t{seen.nFileSizeLow});
        look.device = seen.dwVolumeSerialNumber;
        look.number = std::uint64_t{seen.nFileIndexHigh} << halfBits | std::uint64_t{seen.nFileIndexLow};
    }
    return look;
}

bool File::isSameFile(const File& other) const noexcept {
    BY_HANDLE_FILE_INFORMATION mine{};
    BY_HANDLE_FILE_INFORMATION others{};
    return ::GetFileInformationByHandle(windows::systemHandle(descriptor_), &mine) != FALSE &&
           ::GetFileInformationByHandle(windows::systemHandle(other.descriptor_), &others) != FALSE &&
           mine.dwVolumeSerialNumber == others.dwVolumeSerialNumber &&
           mine.nFileIndexHigh == others.nFileIndexHigh && mine.nFileIndexLow == others.nFileIndexLow;
}

bool removeFile(const std::string& path) noexcept {
    windows::PathBuffer native;
    return windows::toNative(path, native) && ::DeleteFileA(native.data()) != FALSE;
}

std::string absolutePath(const std::string& path) {
    std::string native = path;
    std::replace(native.begin(), native.end(), '/', '\\');
    if (windows::isAbsolute(native)) {
        return native;
    }
    // Where it begins: on another drive than the current one, at the current drive's root, or here.
    const bool ofDrive = native.size() > 1 && native[1] == ':';
    const std::string start =
        ofDrive ? native.substr(0, 2) + "." : std::string(native.rfind('\\', 0) == 0 ? "\\" : ".");
    native.erase(0, ofDrive ? 2 : start == "\\" ? 1 : 0);
    windows::PathBuffer place;
    if (!windows::fullPath(start.c_str(), place)) {
        return kNowhere + native;
    }
    std::string absolute(place.data());
    if (!absolute.ends_with('\\')) {
        absolute += '\\';
    }
    return absolute + native;
}

void syncName(const std::string& /*path*/) noexcept {
    // The file system keeps its names in a journal of its own; a program has no part in that.
}

}  // namespace platform
