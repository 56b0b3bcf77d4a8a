#include "sim/ProcessTime.h"

#include "sim/Clock.h"

#include <atomic>

namespace sim {

namespace {

std::atomic<const Clock*> shownClock = nullptr;
std::atomic<std::uintptr_t> imageBegin = 0;
std::atomic<std::uintptr_t> imageEnd = 0;

}  // namespace

void showTimeOf(const Clock* clock) {
    shownClock = clock;
}

void setModuleImage(std::uintptr_t begin, std::uintptr_t end) {
    imageBegin = begin;
    imageEnd = end;
}

timespec shownTime() {
    timespec now = {};
    if (const Clock* clock = shownClock) {
        const auto wall = clock->wall();
        const auto whole = std::chrono::floor<std::chrono::seconds>(wall);
        now.tv_sec = whole.count();
        now.tv_nsec = std::chrono::nanoseconds(wall - whole).count();
    } else {
        ::clock_gettime(CLOCK_REALTIME, &now);
    }
    return now;
}

bool isModuleCall(const void* address) {
    const auto at = reinterpret_cast<std::uintptr_t>(address);
    return at >= imageBegin && at < imageEnd && shownClock != nullptr;
}

}  // namespace sim
