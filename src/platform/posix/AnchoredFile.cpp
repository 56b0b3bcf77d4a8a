#include "platform/AnchoredFile.h"

#include "platform/posix/Descriptor.h"

#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

namespace platform {

AnchoredFile::~AnchoredFile() {
    if (directory_ >= 0) {
        ::close(directory_);
    }
}

void AnchoredFile::setPath(std::string_view path) noexcept {
    if (!posix::toNative(path, path_)) {
        path_[0] = '\0';  // opens nothing
    }
    const std::size_t separator = lastSeparator(path_.data());
    name_ = separator == std::string_view::npos ? path_.data() : path_.data() + separator + 1;
    refresh();
}

void AnchoredFile::refresh() noexcept {
    if (directory_ >= 0) {
        ::close(directory_);
        directory_ = -1;
    }
    if (name_ == path_.data()) {
        return;  // a plain name follows the process's working directory
    }
    char& end = path_[static_cast<std::size_t>(name_ - path_.data()) - (name_ - path_.data() > 1 ? 1U : 0U)];
    const char kept = std::exchange(end, '\0');
    directory_ = posix::openDescriptor(AT_FDCWD, path_.data(), O_PATH | O_DIRECTORY);
    end = kept;
}

File AnchoredFile::open(OpenMode mode) noexcept {
    return File(posix::openRegular(directory_ < 0 ? AT_FDCWD : directory_,
                                   directory_ < 0 ? path_.data() : name_, mode));
}

std::int64_t AnchoredFile::probeSize() const noexcept {
    const int descriptor = posix::openDescriptor(directory_ < 0 ? AT_FDCWD : directory_,
                                                 directory_ < 0 ? path_.data() : name_, O_RDONLY);
    if (descriptor < 0) {
        return -1;
    }
    const off_t end = ::lseek(descriptor, 0, SEEK_END);
    ::close(descriptor);
    return end < 0 ? 0 : end;
}

}  // namespace platform
