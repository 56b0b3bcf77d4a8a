#include "TraceFile.h"

#include "Terminal.h"
#include "Timeline.h"

#include <cerrno>
#include <cstring>
#include <iostream>
#include <stdexcept>
#include <string_view>
#include <utility>

#include <sys/ioctl.h>
#include <unistd.h>

namespace sim {

namespace {

constexpr std::size_t kCollected = std::size_t{64} * 1024;  // bytes

constexpr std::size_t kWidth = 120;  // columns, where nobody tells

/// How many columns fit what the descriptor leads to.
std::size_t widthOf(int descriptor) {
    winsize size = {};
    return ::ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : kWidth;
}

}  // namespace

TraceFile::TraceFile(Form form, int descriptor, std::string name, bool atOnce)
    : form_(form),
      descriptor_(descriptor),
      name_(std::move(name)),
      atOnce_(atOnce),
      brief_(widthOf(descriptor)) {}

TraceFile::~TraceFile() {
    pending_ += brief_.end();
    flush();
    ::close(descriptor_);
}

void TraceFile::write(const Event& event) {
    const std::lock_guard lock(mutex_);
    add(form_ == Form::json ? asJson(event) : form_ == Form::brief ? brief_.add(event) : asTimeline(event));
}

void TraceFile::tell(const std::string& lines) {
    const std::lock_guard lock(mutex_);
    if (form_ == Form::json) {
        const Terminal::Hidden hidden(terminal_);
        std::cerr << lines << std::flush;
    } else {
        add(brief_.end() + lines);
    }
}

void TraceFile::add(const std::string& lines) {
    pending_ += lines;
    if (atOnce_ || pending_.size() >= kCollected) {
        send();
    }
}

void TraceFile::flush() {
    const std::lock_guard lock(mutex_);
    send();
}

void TraceFile::send() {
    if (pending_.empty()) {
        return;
    }
    const Terminal::Hidden hidden(terminal_);
    std::string_view rest = pending_;
    while (!rest.empty() && error_ == 0) {
        const ssize_t written = ::write(descriptor_, rest.data(), rest.size());
        if (written >= 0) {
            rest.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno != EINTR) {
            error_ = errno;
        }
    }
    pending_.clear();
}

void TraceFile::check() const {
    if (error_ != 0) {
        throw std::runtime_error(name_ + ": cannot write: " + std::strerror(error_));
    }
}

}  // namespace sim
