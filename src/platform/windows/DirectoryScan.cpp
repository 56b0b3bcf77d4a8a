#include "platform/windows/DirectoryScan.h"

#include "platform/windows/System.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <memory>
#include <new>

namespace platform::windows {
namespace {

constexpr std::size_t kLongestName = 260;

}  // namespace

struct DIR {
    std::unique_ptr<char[]> pattern;
    std::array<char, kLongestName + 1> entry{};
    WIN32_FIND_DATAA found{};
    bool isCached = false;  ///< the entry found at the opening is still to be handed out
    HANDLE search = INVALID_HANDLE_VALUE;

    void keepName() noexcept {
        const std::size_t length = ::strnlen(found.cFileName, kLongestName);
        std::memcpy(entry.data(), found.cFileName, length);
        entry[length] = '\0';
    }
};

DIR* opendir(const char* name) noexcept {
    std::unique_ptr<DIR> directory(new (std::nothrow) DIR);
    if (directory == nullptr) {
        errno = ENOENT;
        return nullptr;
    }
    const std::size_t length = std::strlen(name);
    constexpr std::size_t added = 3;  // a backslash, a star, the end mark
    directory->pattern.reset(new (std::nothrow) char[length + added]);
    if (directory->pattern == nullptr) {
        errno = ENOENT;
        return nullptr;
    }
    std::memcpy(directory->pattern.get(), name, length);
    const bool complete = length == 0 || std::strchr("\\/:", name[length - 1]) != nullptr;
    std::strcpy(directory->pattern.get() + length, complete ? "*" : "\\*");
    directory->search = ::FindFirstFileA(directory->pattern.get(), &directory->found);
    if (directory->search == INVALID_HANDLE_VALUE) {
        errno = ENOENT;
        return nullptr;
    }
    directory->keepName();
    directory->isCached = true;
    return directory.release();
}

const char* readdir(DIR* directory) noexcept {
    if (directory == nullptr || directory->search == INVALID_HANDLE_VALUE) {
        errno = EBADF;
        return nullptr;
    }
    if (directory->isCached) {
        directory->isCached = false;
        return directory->entry.data();
    }
    if (::FindNextFileA(directory->search, &directory->found) == FALSE) {
        const bool isEnd = ::GetLastError() == ERROR_NO_MORE_FILES;
        ::FindClose(directory->search);
        directory->search = INVALID_HANDLE_VALUE;
        errno = isEnd ? ENOENT : EIO;
        return nullptr;
    }
    directory->keepName();
    return directory->entry.data();
}

int closedir(DIR* directory) noexcept {
    if (directory == nullptr) {
        errno = EBADF;
        return -1;
    }
    const std::unique_ptr<DIR> owner(directory);
    if (directory->search != INVALID_HANDLE_VALUE && ::FindClose(directory->search) == FALSE) {
        errno = EBADF;
        return -1;
    }
    return 0;
}

}  // namespace platform::windows
