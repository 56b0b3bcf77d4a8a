#include "platform/Directory.h"

#include "platform/posix/Descriptor.h"

#include <algorithm>
#include <cerrno>
#include <memory>

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

namespace platform {

int listDirectory(const std::string& directory, std::vector<std::string>& names) {
    posix::PathBuffer native;
    if (!posix::toNative(directory, native)) {
        return errno;
    }
    const int descriptor = posix::openDescriptor(AT_FDCWD, native.data(), O_RDONLY | O_DIRECTORY);
    DIR* const opened = descriptor < 0 ? nullptr : ::fdopendir(descriptor);
    if (opened == nullptr) {
        const int error = errno;
        if (descriptor >= 0) {
            ::close(descriptor);
        }
        return error == ENOTDIR ? ENOENT : error;
    }
    const auto close = [](DIR* stream) { ::closedir(stream); };
    const std::unique_ptr<DIR, decltype(close)> stream(opened, close);
    const auto first = static_cast<std::ptrdiff_t>(names.size());
    while (const dirent* entry = ::readdir(stream.get())) {
        names.emplace_back(entry->d_name);
    }
    // The order in which a file system yields names differs from one to the next.
    std::sort(names.begin() + first, names.end());
    return 0;
}

}  // namespace platform
