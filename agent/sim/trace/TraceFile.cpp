#include "sim/trace/TraceFile.h"

#include "sim/System.h"
#include "sim/input/Terminal.h"
#include "sim/trace/Timeline.h"

#include <cstring>
#include <iostream>
#include <stdexcept>
#include <utility>

namespace sim {

namespace {

constexpr std::size_t kCollected = std::size_t{64} * 1024;  // bytes

constexpr std::size_t kWidth = 120;  // columns, where nobody tells

}  // namespace

TraceFile::TraceFile(Form form, int descriptor, std::string name, bool atOnce)
    : form_(form),
      descriptor_(descriptor),
      name_(std::move(name)),
      atOnce_(atOnce),
      brief_(system::widthOf(descriptor).value_or(kWidth), atOnce) {}

TraceFile::~TraceFile() {
    pending_ += brief_.end();
    flush();
    system::closeOutput(descriptor_);
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
    if (error_ == 0) {
        error_ = system::writeAll(descriptor_, pending_);
    }
    pending_.clear();
}

void TraceFile::check() const {
    if (error_ != 0) {
        throw std::runtime_error(name_ + ": cannot write: " + std::strerror(error_));
    }
}

}  // namespace sim
