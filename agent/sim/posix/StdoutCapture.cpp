#include "sim/trace/StdoutCapture.h"

#include <cstdio>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace sim {

StdoutCapture::StdoutCapture() {
    std::fflush(stdout);
    original_ = checked(::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1), "cannot keep it");
    collected_ = checked(::memfd_create("stdout", MFD_CLOEXEC), "cannot collect it");
    // All who share the descriptor append, also after the file was emptied.
    checked(::fcntl(collected_, F_SETFL, O_APPEND), "cannot collect it");
    checked(::dup2(collected_, STDOUT_FILENO), "cannot redirect it");
}

StdoutCapture::~StdoutCapture() {
    std::fflush(stdout);
    ::dup2(original_, STDOUT_FILENO);
    ::close(original_);
    ::close(collected_);
}

std::string StdoutCapture::take() {
    std::fflush(stdout);
    struct stat state = {};
    if (::fstat(collected_, &state) != 0 || state.st_size == 0) {
        return {};
    }
    std::string text(static_cast<std::size_t>(state.st_size), '\0');
    const ssize_t size = ::pread(collected_, text.data(), text.size(), 0);
    text.resize(size < 0 ? 0 : static_cast<std::size_t>(size));
    checked(::ftruncate(collected_, 0), "cannot empty what was collected");
    return text;
}

}  // namespace sim
