#include "TraceFile.h"

#include "Timeline.h"

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <string_view>
#include <utility>

#include <unistd.h>

namespace sim {

namespace {

constexpr std::size_t kCollected = std::size_t{64} * 1024;  // bytes

}  // namespace

TraceFile::TraceFile(Form form, int descriptor, std::string name, bool atOnce)
    : form_(form), descriptor_(descriptor), name_(std::move(name)), atOnce_(atOnce) {}

TraceFile::~TraceFile() {
    flush();
    ::close(descriptor_);
}

void TraceFile::write(const Event& event) {
    const std::lock_guard lock(mutex_);
    pending_ += form_ == Form::json ? asJson(event) : asTimeline(event);
    if (atOnce_ || pending_.size() >= kCollected) {
        send();
    }
}

void TraceFile::flush() {
    const std::lock_guard lock(mutex_);
    send();
}

void TraceFile::send() {
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
