#include "platform/Access.h"

#include "platform/posix/Descriptor.h"

#include <linux/magic.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

namespace platform {
namespace {

bool may(const std::string& path, int kind) noexcept {
    posix::PathBuffer native;
    if (!posix::toNative(path, native)) {
        return false;
    }
    struct stat status {};
    if (::stat(native.data(), &status) == 0 && S_ISDIR(status.st_mode)) {
        kind |= X_OK;
    }
    return ::faccessat(AT_FDCWD, native.data(), kind, AT_EACCESS) == 0;
}

}  // namespace

bool mayRead(const std::string& path) noexcept {
    return may(path, R_OK);
}

bool mayWrite(const std::string& path) noexcept {
    return may(path, W_OK);
}

bool mayExecute(const std::string& path) noexcept {
    return may(path, X_OK);
}

bool isInMemory(const std::string& path) noexcept {
    posix::PathBuffer native;
    struct statfs system {};
    return posix::toNative(path, native) && ::statfs(native.data(), &system) == 0 &&
           (system.f_type == TMPFS_MAGIC || system.f_type == RAMFS_MAGIC);
}

}  // namespace platform
