#include "sim/time/RealClock.h"

#include "sim/input/Input.h"

#include <algorithm>
#include <thread>

namespace sim {

RealClock::RealClock(std::chrono::microseconds start, Input& input) : Clock(start), input_(input) {}

bool RealClock::advance(Instant due, bool interruptible) {
    const auto remaining = [this, due] { return due == kNever ? kNever : due - elapsed(); };
    if (!interruptible) {
        std::this_thread::sleep_for(remaining());
    } else if (input_.wait(remaining())) {
        moveTo(std::clamp(elapsed(), now(), due));
        return false;
    }
    moveTo(due);
    return true;
}

Instant RealClock::elapsed() const {
    return std::chrono::duration_cast<Instant>(std::chrono::steady_clock::now() - start_);
}

}  // namespace sim
