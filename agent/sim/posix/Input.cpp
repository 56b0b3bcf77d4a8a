#include "sim/input/Input.h"

#include "sim/input/Terminal.h"
#include "sim/posix/Timespec.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <system_error>
#include <utility>

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace sim {

namespace {

// A signal handler finds nothing but globals.
int signalBell = -1;                ///< an eventfd: rings when one of the signals came
std::atomic<bool> mustEnd = false;  ///< it was none that a person may mean for the line being typed
std::atomic<int> interrupts = 0;

extern "C" void noteSignal(int signal) {
    const int saved = errno;
    if (signal != SIGINT) {
        mustEnd = true;
    } else if (interrupts++ > 0) {  // The first one was not even seen, or the end takes too long.
        std::signal(SIGINT, SIG_DFL);
        ::raise(SIGINT);
    }
    ::eventfd_write(signalBell, 1);  // This program's own write() is not fit for a signal handler.
    errno = saved;
}

constexpr std::array kSignals = {SIGINT, SIGTERM, SIGHUP};

}  // namespace

Input::Input(int descriptor, Terminal* terminal) : descriptor_(descriptor), terminal_(terminal) {
    signalBell = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (signalBell < 0) {
        throw std::system_error(errno, std::generic_category(), "eventfd");
    }
    mustEnd = false;
    interrupts = 0;
    struct sigaction action = {};
    action.sa_handler = noteSignal;
    action.sa_flags = SA_RESTART;
    for (const int signal : kSignals) {
        ::sigaction(signal, &action, nullptr);
    }
}

Input::~Input() {
    for (const int signal : kSignals) {
        std::signal(signal, SIG_DFL);
    }
    ::close(std::exchange(signalBell, -1));
}

bool Input::wait(std::chrono::microseconds time) {
    std::array<pollfd, 3> watched = {
        {{signalBell, POLLIN, 0}, {open_ ? descriptor_ : -1, POLLIN, 0}, {other_, POLLIN, 0}}};
    const timespec limit = timespecOf(std::max(time, std::chrono::microseconds::zero()));
    const auto deadline = time == std::chrono::microseconds::max() ? nullptr : &limit;
    if (::ppoll(watched.data(), watched.size(), deadline, nullptr) < 0) {
        if (errno == EINTR) {
            return true;
        }
        throw std::system_error(errno, std::generic_category(), "poll");
    }
    if (eventfd_t count = 0; watched[0].revents != 0 && ::eventfd_read(signalBell, &count) == 0) {
        if (!mustEnd && !stopRequested_ && terminal_ != nullptr && terminal_->clearLine()) {
            interrupts = 0;
        } else {
            stopRequested_ = true;
        }
    }
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
