#include "platform/Console.h"

#include "platform/ThreadEnd.h"
#include "platform/portable/EchoWithoutWait.h"
#include "platform/portable/OutputRole.h"
#include "platform/posix/WriteSignals.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <stdio_ext.h>
#include <string_view>

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace platform {
namespace {

/// For a stream whose lock the caller holds: whether a text fits its buffer, which takes no system call.
bool fitsBuffer(std::string_view text, std::FILE* stream) noexcept {
    return text.size() < __fbufsize(stream) - __fpending(stream) && __flbf(stream) == 0;
}

/// Waits until a stream's file takes something. Signals of the host come in during that time, as they cannot in a
/// write: one that they cut short would lose what the stream has kept.
void awaitRoom(std::FILE* stream) noexcept {
    const KeepThread keep;
    pollfd output{fileno_unlocked(stream), POLLOUT, 0};
    while (output.fd >= 0 && ::poll(&output, 1, -1) < 0 && errno == EINTR) {
    }
}

/// So much of a text as takes one call of the system at the most.
std::size_t longestAtOnce(std::FILE* stream) noexcept {
    const std::size_t size = __fbufsize(stream);
    const std::size_t room = size - __fpending(stream);
    return size <= 1 ? PIPE_BUF : room == 0 ? size - 1 : room;
}

/// To a stream whose lock the caller holds.
void write(std::string_view text, std::FILE* stream) noexcept {
    if (fitsBuffer(text, stream)) {
        fwrite_unlocked(text.data(), 1, text.size(), stream);
        return;
    }
    while (!text.empty()) {
        const std::string_view piece = text.substr(0, longestAtOnce(stream));
        text.remove_prefix(piece.size());
        awaitRoom(stream);
        const posix::WriteSignals guard;
        fwrite_unlocked(piece.data(), 1, piece.size(), stream);
    }
}

/// The writer's role and the stream for a scope, if both are available.
class Writer final {
  public:
    explicit Writer(Output& output) noexcept : role_(output) {
        if (role_.mayWrite()) {
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
    }

    bool isWriter() const noexcept { return isWriter_; }
    void write(std::string_view text) const noexcept { platform::write(text, stdout); }

  private:
    const OutputRole role_;  // given back after the stream
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

/// Whether standard output takes so many bytes without a wait, as far as that can be known.
bool isRoomFor(std::size_t size) noexcept {
    // A pipe counts in pages, of which the first and last may hold less.
    constexpr std::size_t kPartlyFilled = 8192;
    // `poll` admits the end of the thread, also when it does not wait.
    const KeepThread keep;
    pollfd output{STDOUT_FILENO, POLLOUT, 0};
    if (::poll(&output, 1, 0) != 1) {
        return false;
    }
    int used = 0;
    const int whole = ::fcntl(STDOUT_FILENO, F_GETPIPE_SZ);
    return (output.revents & POLLOUT) == 0 ||
           whole < 0 ||  // an error means no wait; a file and a terminal say the truth
           (::ioctl(STDOUT_FILENO, FIONREAD, &used) == 0 &&
            size + static_cast<std::size_t>(used) + kPartlyFilled <= static_cast<std::size_t>(whole));
}

}  // namespace

void echo(const char* text) noexcept {
    Output& out = output();
    const std::string_view all = text;
    if (writeOrdinary(all, out)) {
        return;
    }
    if (EchoWithoutWait::isActive() && !isRoomFor(__fpending(stdout) + out.texts.size() + all.size())) {
        out.texts.keep(all);
    } else {
        writeOrKeep<Writer>(all, out);
    }
}

void flushEcho() noexcept {
    const Writer writer(output());
    if (writer.isWriter()) {
        awaitRoom(stdout);
        const posix::WriteSignals guard;
        fflush_unlocked(stdout);
    }
}

void complain(const char* text) noexcept {
    flockfile(stderr);
    write(text, stderr);
    funlockfile(stderr);
}

}  // namespace platform
