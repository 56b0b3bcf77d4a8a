#include "sim/input/Bell.h"

#include <cerrno>
#include <system_error>

#include <sys/eventfd.h>
#include <unistd.h>

namespace sim {

Bell::Bell() : descriptor_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (descriptor_ < 0) {
        throw std::system_error(errno, std::generic_category(), "eventfd");
    }
}

Bell::~Bell() {
    ::close(descriptor_);
}

void Bell::ring() {
    ::eventfd_write(descriptor_, 1);
}

void Bell::answer() {
    eventfd_t count = 0;
    ::eventfd_read(descriptor_, &count);
}

}  // namespace sim
