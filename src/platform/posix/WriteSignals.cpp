#include "platform/posix/WriteSignals.h"

#include <cerrno>
#include <ctime>
#include <initializer_list>

namespace platform::posix {
namespace {

sigset_t setOf(int signal) noexcept {
    sigset_t set{};
    sigemptyset(&set);
    sigaddset(&set, signal);
    return set;
}

}  // namespace

WriteSignals::WriteSignals() noexcept {
    sigset_t all{};
    sigfillset(&all);
    for (const int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGILL}) {  // of a fault of the thread's own
        sigdelset(&all, signal);
    }
    pthread_sigmask(SIG_BLOCK, &all, &before_);
    sigemptyset(&pending_);
    if (sigismember(&before_, SIGPIPE) == 1 || sigismember(&before_, SIGXFSZ) == 1) {
        sigpending(&pending_);  // only then they can have come before
    }
    errno = 0;
}

WriteSignals::~WriteSignals() {
    const int signal = errno == EPIPE ? SIGPIPE : errno == EFBIG ? SIGXFSZ : 0;
    if (signal != 0 && sigismember(&pending_, signal) == 0) {
        const sigset_t sent = setOf(signal);
        const std::timespec noTime{};
        while (sigtimedwait(&sent, nullptr, &noTime) < 0 && errno == EINTR) {
        }
    }
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

}  // namespace platform::posix
