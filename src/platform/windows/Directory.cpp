#include "platform/Directory.h"

#include "platform/windows/DirectoryScan.h"
#include "platform/windows/Path.h"

#include <algorithm>
#include <cerrno>
#include <memory>

namespace platform {
namespace {

/// The path of an entry, or of what an absolute path leads to; empty when there is none, which nothing
/// is found at.
windows::PathBuffer pathOf(const NativeDirectory& directory, const std::string& name) noexcept {
    windows::PathBuffer path{};
    if (directory.handle == kNoFile) {
        return path;
    }
    if (windows::isAbsolute(name)) {
        if (!windows::toNative(name, path)) {
            path.front() = '\0';
        }
        return path;
    }
    const std::string_view place = directory.path.data();
    const bool separated = place.ends_with('\\');
    if (place.size() + name.size() + (separated ? 1 : 2) <= path.size()) {
        auto end = std::copy(place.begin(), place.end(), path.begin());
        if (!separated) {
            *end++ = '\\';
        }
        *std::copy(name.begin(), name.end(), end) = '\0';
    }
    return path;
}

}  // namespace

int Directory::open(std::string_view path) noexcept {
    windows::PathBuffer given;
    windows::PathBuffer full;
    if (!windows::toNative(path, given)) {
        return ENOENT;
    }
    // What stands before the last separator of a path at a drive's root. To the system it is the drive's
    // current directory, and other files would be deleted.
    if (path.ends_with(':') && path.size() + 1 < given.size()) {
        given.at(path.size()) = '\\';
        given.at(path.size() + 1) = '\0';
    }
    if (!windows::fullPath(given.data(), full)) {
        return ENOENT;
    }
    // Not for removal by others: the path has to lead here as long as it is used.
    const HANDLE handle = ::CreateFileA(full.data(), FILE_LIST_DIRECTORY, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                        nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        return ENOENT;
    }
    const DWORD attributes = ::GetFileAttributesA(full.data());
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
        ::CloseHandle(handle);
        return ENOENT;
    }
    close();
    descriptor_ = {reinterpret_cast<NativeFile>(handle), full};
    return 0;
}

void Directory::close() noexcept {
    if (descriptor_.handle != kNoFile) {
        ::CloseHandle(windows::systemHandle(descriptor_.handle));
        descriptor_.handle = kNoFile;
    }
}

int Directory::list(std::vector<std::string>& names) const {
    if (descriptor_.handle == kNoFile) {
        return EBADF;
    }
    const std::unique_ptr<windows::DIR, int (*)(windows::DIR*)> scan(
        windows::opendir(descriptor_.path.data()), windows::closedir);
    if (scan == nullptr) {
        return errno;
    }
    while (const char* name = windows::readdir(scan.get())) {
        names.emplace_back(name);
    }
    return errno == ENOENT ? 0 : errno;
}

File Directory::openFile(const std::string& name, OpenMode mode) const noexcept {
    return File(windows::openRegular(pathOf(descriptor_, name).data(), mode));
}

Look Directory::look(const std::string& name) const noexcept {
    return openFile(name, OpenMode::Read).look();
}

bool Directory::mayRead(const std::string& /*name*/) const noexcept {
    return true;  // nothing is seen here of what may not be read
}

std::optional<std::int64_t> Directory::modifiedAt(const std::string& name) const noexcept {
    const windows::PathBuffer path = pathOf(descriptor_, name);
    const HANDLE handle =
        ::CreateFileA(path.data(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                      nullptr, OPEN_EXISTING, FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        return std::nullopt;
    }
    const auto own = File(reinterpret_cast<NativeFile>(handle)).modifiedAt();
    const bool isLink = (::GetFileAttributesA(path.data()) & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
    return own && isLink ? std::max(own, openFile(name, OpenMode::Read).modifiedAt()) : own;
}

bool Directory::setModifiedAt(const std::string& name, std::int64_t moment) const noexcept {
    const HANDLE handle = ::CreateFileA(pathOf(descriptor_, name).data(), FILE_WRITE_ATTRIBUTES,
                                        FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                        OPEN_EXISTING, FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        return false;
    }
    const FILETIME written = windows::momentOf(moment);
    const bool done = ::SetFileTime(handle, nullptr, nullptr, &written) != FALSE;
    ::CloseHandle(handle);
    return done;
}

bool Directory::remove(const std::string& name) const noexcept {
    return ::DeleteFileA(pathOf(descriptor_, name).data()) != FALSE;
}

Renaming Directory::rename(const std::string& from, const std::string& to) const noexcept {
    const windows::PathBuffer oldPath = pathOf(descriptor_, from);
    const windows::PathBuffer newPath = pathOf(descriptor_, to);
    const DWORD attributes = ::GetFileAttributesA(oldPath.data());
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        return Renaming::Failed;
    }
    if (::MoveFileExA(oldPath.data(), newPath.data(), 0) != FALSE) {
        return Renaming::Done;
    }
    const DWORD error = ::GetLastError();
    return error == ERROR_ALREADY_EXISTS || error == ERROR_FILE_EXISTS ? Renaming::NameTaken
                                                                       : Renaming::Failed;
}

}  // namespace platform
