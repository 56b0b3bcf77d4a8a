#include "platform/Console.h"

#include "platform/KeptTexts.h"
#include "platform/Mutex.h"
#include "platform/ThreadEnd.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <ctime>
#include <new>
#include <stdio_ext.h>
#include <string_view>

namespace platform {
namespace {

/// While one lives, a pipe without reader makes the calling thread's writes fail and sends no signal that
/// would end the process; nor is the thread unwound.
class Guard final {
  public:
    Guard() noexcept {
        sigemptyset(&pipe_);
        sigaddset(&pipe_, SIGPIPE);
        pthread_sigmask(SIG_BLOCK, &pipe_, &before_);
        if (sigismember(&before_, SIGPIPE) == 1) {  // only then it can have come before
            sigset_t pending{};
            wasPending_ = sigpending(&pending) == 0 && sigismember(&pending, SIGPIPE) == 1;
        }
        errno = 0;
    }
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;
    ~Guard() {
        if (errno == EPIPE && !wasPending_) {
            const std::timespec noTime{};
            while (sigtimedwait(&pipe_, nullptr, &noTime) < 0 && errno == EINTR) {
            }
        }
        pthread_sigmask(SIG_SETMASK, &before_, nullptr);
    }

  private:
    KeepThread keep_;
    sigset_t pipe_{};
    sigset_t before_{};
    bool wasPending_ = false;
};

/// For a stream whose lock the caller holds: whether a text fits its buffer, which takes no system call.
bool fitsBuffer(std::string_view text, std::FILE* stream) noexcept {
    return text.size() < __fbufsize(stream) - __fpending(stream) && __flbf(stream) == 0;
}

/// To a stream whose lock the caller holds.
void write(std::string_view text, std::FILE* stream) noexcept {
    if (fitsBuffer(text, stream)) {
        fwrite_unlocked(text.data(), 1, text.size(), stream);
    } else {
        const Guard guard;
        fwrite_unlocked(text.data(), 1, text.size(), stream);
    }
}

/// Standard output as the module's threads share it: one at a time has the role of the writer and may wait
/// for whoever reads; nobody waits for the role.
struct Output {
    Mutex role;
    std::atomic<bool> writerDied{false};  ///< in a write perhaps, which leaves the stream locked for ever
    KeptTexts texts;
};

/// Never destroyed: threads of the host may still be here while the process ends.
Output& output() noexcept {
    alignas(Output) static std::array<std::byte, sizeof(Output)> storage;
    static Output* const object = ::new (storage.data()) Output;
    return *object;
}

/// The writer's role and the stream for a scope, if both are to be had.
class Writer final {
  public:
    explicit Writer(Output& output) noexcept : output_(output) {
        Mutex::Wait outcome = output.role.tryWait();
        if (outcome == Mutex::Wait::Abandoned) {
            output.writerDied = true;
            outcome = output.role.tryWait();
        }
        hasRole_ = outcome == Mutex::Wait::Obtained;
        if (hasRole_ || output.role.creationError() != 0) {
            if (output.writerDied) {
                isWriter_ = ftrylockfile(stdout) == 0;
            } else {
                flockfile(stdout);
                isWriter_ = true;
            }
        }
    }
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;
    ~Writer() {
        if (isWriter_) {
            funlockfile(stdout);
        }
        if (hasRole_) {
            output_.role.release();
        }
    }

    bool isWriter() const noexcept { return isWriter_; }
    void write(std::string_view text) const noexcept { platform::write(text, stdout); }

  private:
    Output& output_;
    bool hasRole_ = false;
    bool isWriter_ = false;
};

/// The ordinary case, in which there is nothing to wait for: false otherwise.
bool writeOrdinary(std::string_view text, const Output& output) noexcept {
    if (ftrylockfile(stdout) != 0) {
        return false;
    }
    const bool isOrdinary = fitsBuffer(text, stdout) && !output.texts.isAny();
    if (isOrdinary) {
        fwrite_unlocked(text.data(), 1, text.size(), stdout);
    }
    funlockfile(stdout);
    return isOrdinary;
}

}  // namespace

void echo(const char* text) noexcept {
    Output& out = output();
    if (!writeOrdinary(text, out)) {
        writeOrKeep<Writer>(text, out);
    }
}

void flushEcho() noexcept {
    const Writer writer(output());
    if (writer.isWriter()) {
        const Guard guard;
        fflush_unlocked(stdout);
    }
}

void complain(const char* text) noexcept {
    flockfile(stderr);
    write(text, stderr);
    funlockfile(stderr);
}

}  // namespace platform
