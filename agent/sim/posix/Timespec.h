#pragma once

#include <chrono>
#include <ctime>

namespace sim {

/// A moment or a span as system calls take it.
inline timespec timespecOf(std::chrono::microseconds time) {
    const auto whole = std::chrono::floor<std::chrono::seconds>(time);
    timespec spec = {};
    spec.tv_sec = whole.count();
    spec.tv_nsec = static_cast<decltype(spec.tv_nsec)>(std::chrono::nanoseconds(time - whole).count());
    return spec;
}

}  // namespace sim
