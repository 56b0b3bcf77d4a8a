#include "sim/Input.h"

#include "sim/Terminal.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <system_error>
#include <utility>

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace sim {

namespace {

/// Counts up when SIGINT came; a signal handler finds nothing but globals.
int interruptCounter = -1;

extern "C" void countInterrupt(int /*signal*/) {
    const int saved = errno;
    ::eventfd_write(interruptCounter, 1);  // This program's own write() is not fit for a signal handler.
    errno = saved;
}

}  // namespace

Input::Input(int descriptor, Terminal* terminal) : descriptor_(descriptor), terminal_(terminal) {
    interruptCounter = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (interruptCounter < 0) {
        throw std::system_error(errno, std::generic_category(), "eventfd");
    }
    struct sigaction action = {};
    action.sa_handler = countInterrupt;
    // A second SIGINT ends the process at once.
    action.sa_flags = static_cast<int>(SA_RESTART | SA_RESETHAND);
    ::sigaction(SIGINT, &action, nullptr);
}

Input::~Input() {
    std::signal(SIGINT, SIG_DFL);
    ::close(std::exchange(interruptCounter, -1));
}

bool Input::wait(std::chrono::microseconds time) {
    using namespace std::chrono;
    std::array<pollfd, 3> watched = {
        {{interruptCounter, POLLIN, 0}, {open_ ? descriptor_ : -1, POLLIN, 0}, {other_, POLLIN, 0}}};
    const seconds whole = duration_cast<seconds>(std::max(time, microseconds::zero()));
    const timespec limit = {whole.count(),
                            duration_cast<nanoseconds>(std::max(time, microseconds::zero()) - whole).count()};
    const auto deadline = time == microseconds::max() ? nullptr : &limit;
    if (::ppoll(watched.data(), watched.size(), deadline, nullptr) < 0) {
        if (errno == EINTR) {
            return true;
        }
        throw std::system_error(errno, std::generic_category(), "poll");
    }
    stopRequested_ = stopRequested_ || watched[0].revents != 0;
    if (watched[1].revents != 0) {
        read();
    }
    return watched[0].revents != 0 || watched[1].revents != 0 || watched[2].revents != 0;
}

void Input::read() {
    if (terminal_ != nullptr) {
        open_ = terminal_->read(lines_);
        return;
    }
    std::array<char, 4096> buffer = {};
    const ssize_t size = ::read(descriptor_, buffer.data(), buffer.size());
    if (size < 0 && (errno == EINTR || errno == EAGAIN)) {
        return;
    }
    if (size <= 0) {
        end();
        return;
    }
    take({buffer.data(), static_cast<std::size_t>(size)});
}

}  // namespace sim
