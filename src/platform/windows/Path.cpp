#include "platform/windows/Path.h"

#include <algorithm>
#include <cerrno>
#include <cwchar>

namespace platform::windows {
namespace {

constexpr std::string_view kDevices = "\\\\.\\";  // also of pipes, which take an opening for an order

constexpr std::int64_t kTicksPerSecond = 10'000'000;
constexpr std::int64_t kOriginOf1970 = 11'644'473'600;  // seconds since 1601
constexpr unsigned kHalfBits = 32;

bool isSeparator(char character) noexcept {
    return character == '\\' || character == '/';
}

struct Opening {
    DWORD access;
    DWORD sharing;
    DWORD disposition;
};

Opening openingOf(OpenMode mode) noexcept {
    // What stays open can be read and written by others, but not moved or removed. A look disturbs nobody.
    constexpr DWORD shared = FILE_SHARE_READ | FILE_SHARE_WRITE;
    switch (mode) {
        case OpenMode::Read:
            break;
        case OpenMode::ReadWrite:
            return {GENERIC_READ | GENERIC_WRITE, shared, OPEN_EXISTING};
        case OpenMode::Create:
            return {GENERIC_READ | GENERIC_WRITE, shared, OPEN_ALWAYS};
        case OpenMode::Append:
            // Each write finds the end in one step, whoever else writes, and nothing can be written over.
            return {FILE_APPEND_DATA | FILE_READ_ATTRIBUTES | SYNCHRONIZE, shared, OPEN_ALWAYS};
    }
    return {GENERIC_READ, shared | FILE_SHARE_DELETE, OPEN_EXISTING};
}

}  // namespace

bool toNative(std::string_view path, PathBuffer& native) noexcept {
    if (path.size() >= native.size() || path.find('\0') != std::string_view::npos) {
        return false;
    }
    *std::replace_copy(path.begin(), path.end(), native.begin(), '/', '\\') = '\0';
    return true;
}

bool fullPath(const char* path, PathBuffer& full) noexcept {
    std::array<wchar_t, kPathSize> given{};
    std::array<wchar_t, kPathSize> letters{};
    std::array<wchar_t, kPathSize> fitted{};
    const auto widen = [](const char* text, std::array<wchar_t, kPathSize>& wide) {
        return ::MultiByteToWideChar(CP_ACP, 0, text, -1, wide.data(), static_cast<int>(wide.size())) != 0;
    };
    const DWORD length = ::GetFullPathNameA(path, static_cast<DWORD>(full.size()), full.data(), nullptr);
    if (length == 0 || length >= full.size() || !widen(full.data(), fitted) || !widen(path, given)) {
        return false;
    }
    const DWORD count =
        ::GetFullPathNameW(given.data(), static_cast<DWORD>(letters.size()), letters.data(), nullptr);
    return count > 0 && count < letters.size() && std::wcscmp(letters.data(), fitted.data()) == 0;
}

bool isAbsolute(std::string_view path) noexcept {
    const bool atDrive = path.size() > 2 && path[1] == ':' && isSeparator(path[2]);
    return atDrive || (path.size() > 1 && isSeparator(path[0]) && isSeparator(path[1]));
}

NativeFile openRegular(const char* path, OpenMode mode) noexcept {
    if (std::string_view(path).starts_with(kDevices)) {
        errno = EINVAL;
        return kNoFile;
    }
    const Opening opening = openingOf(mode);
    const HANDLE handle = ::CreateFileA(path, opening.access, opening.sharing, nullptr, opening.disposition,
                                        FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        errno = ::GetLastError() == ERROR_SHARING_VIOLATION ? EBUSY : ENOENT;
        return kNoFile;
    }
    errno = EINVAL;
    if (::GetFileType(handle) != FILE_TYPE_DISK) {  // a device's name is one in every directory
        ::CloseHandle(handle);
        return kNoFile;
    }
    return reinterpret_cast<NativeFile>(handle);
}

std::int64_t secondsOf(const FILETIME& moment) noexcept {
    const auto ticks = static_cast<std::int64_t>(std::uint64_t{moment.dwHighDateTime} << kHalfBits |
                                                 std::uint64_t{moment.dwLowDateTime});
    return ticks / kTicksPerSecond - kOriginOf1970;
}

FILETIME momentOf(std::int64_t seconds) noexcept {
    const auto ticks = static_cast<std::uint64_t>((seconds + kOriginOf1970) * kTicksPerSecond);
    return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> kHalfBits)};
}

}  // namespace platform::windows
