#include "platform/Directory.h"

#include "platform/ThreadEnd.h"
#include "platform/posix/Descriptor.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <utility>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

int Directory::open(std::string_view path) noexcept {
    const KeepThread keep;
    posix::PathBuffer native;
    const int opened = posix::toNative(path, native)
                           ? posix::openDescriptor(AT_FDCWD, native.data(), O_PATH | O_DIRECTORY)
                           : -1;
    if (opened < 0) {
        return errno == ENOTDIR ? ENOENT : errno;
    }
    close();
    descriptor_ = opened;
    return 0;
}

void Directory::close() noexcept {
    if (descriptor_ >= 0) {
        const KeepThread keep;
        ::close(std::exchange(descriptor_, kNoDirectory));
    }
}

int Directory::list(std::vector<std::string>& names) const {
    const KeepThread keep;
    const int descriptor = posix::openDescriptor(descriptor_, ".", O_RDONLY | O_DIRECTORY);
    DIR* const opened = descriptor < 0 ? nullptr : ::fdopendir(descriptor);
    if (opened == nullptr) {
        const int error = errno;
        if (descriptor >= 0) {
            ::close(descriptor);
        }
        return error;
    }
    const auto close = [](DIR* stream) { ::closedir(stream); };
    const std::unique_ptr<DIR, decltype(close)> stream(opened, close);
    // The end leaves `errno` alone, a failure does not.
    for (errno = 0; const dirent* entry = ::readdir(stream.get()); errno = 0) {
        names.emplace_back(entry->d_name);
    }
    return errno;
}

File Directory::openFile(const std::string& name, OpenMode mode) const noexcept {
    return File(posix::openRegular(descriptor_, name.c_str(), mode));
}

Look Directory::look(const std::string& name) const noexcept {
    return posix::lookAt(descriptor_, name.c_str(), 0);
}

bool Directory::mayRead(const std::string& name) const noexcept {
    return ::faccessat(descriptor_, name.c_str(), R_OK, AT_EACCESS) == 0 || errno != EACCES;
}

std::optional<std::int64_t> Directory::modifiedAt(const std::string& name) const noexcept {
    struct stat own {};
    if (::fstatat(descriptor_, name.c_str(), &own, AT_SYMLINK_NOFOLLOW) != 0) {
        return std::nullopt;
    }
    if (S_ISREG(own.st_mode)) {
        return own.st_mtime;
    }
    if (!S_ISLNK(own.st_mode)) {
        return std::nullopt;
    }
    struct stat target {};
    const bool leadsToAFile =
        ::fstatat(descriptor_, name.c_str(), &target, 0) == 0 && S_ISREG(target.st_mode);
    return leadsToAFile ? std::max(own.st_mtime, target.st_mtime) : own.st_mtime;
}

bool Directory::setModifiedAt(const std::string& name, std::int64_t moment) const noexcept {
    const timespec times[] = {{0, UTIME_OMIT}, {moment, 0}};
    return ::utimensat(descriptor_, name.c_str(), times, AT_SYMLINK_NOFOLLOW) == 0;
}

bool Directory::remove(const std::string& name) const noexcept {
    return ::unlinkat(descriptor_, name.c_str(), 0) == 0;
}

Renaming Directory::rename(const std::string& from, const std::string& to) const noexcept {
    const char* const oldName = from.c_str();
    const char* const newName = to.c_str();
    struct stat status {};
    if (::fstatat(descriptor_, oldName, &status, 0) != 0 || !S_ISREG(status.st_mode)) {
        return Renaming::Failed;
    }
    if (::renameat2(descriptor_, oldName, descriptor_, newName, RENAME_NOREPLACE) == 0) {
        return Renaming::Done;
    }
    if (errno != EINVAL && errno != ENOSYS) {
        return errno == EEXIST ? Renaming::NameTaken : Renaming::Failed;
    }
    // A file system without that flag: a second name that must not exist yet, then the first one goes.
    if (::linkat(descriptor_, oldName, descriptor_, newName, 0) == 0) {
        if (::unlinkat(descriptor_, oldName, 0) == 0) {
            return Renaming::Done;
        }
        ::unlinkat(descriptor_, newName, 0);
        return Renaming::Failed;
    }
    if (errno == EEXIST) {
        return Renaming::NameTaken;
    }
    if (errno != EPERM && errno != EOPNOTSUPP && errno != ENOSYS && errno != EMLINK) {
        return Renaming::Failed;
    }
    // Nor are there second names: a look has to do.
    if (::fstatat(descriptor_, newName, &status, AT_SYMLINK_NOFOLLOW) == 0) {
        return Renaming::NameTaken;
    }
    return errno == ENOENT && ::renameat(descriptor_, oldName, descriptor_, newName) == 0 ? Renaming::Done
                                                                                          : Renaming::Failed;
}

}  // namespace platform
