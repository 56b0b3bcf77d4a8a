#include "sim/time/ProcessTime.h"

#include "sim/System.h"
#include "sim/time/Clock.h"

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

std::chrono::microseconds shownTime() {
    const Clock* clock = shownClock;
    return clock != nullptr ? clock->wall() : system::realTime();
}

bool isModuleCall(const void* address) {
    const auto at = reinterpret_cast<std::uintptr_t>(address);
    return at >= imageBegin && at < imageEnd && shownClock != nullptr;
}

}  // namespace sim
