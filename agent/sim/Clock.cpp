#include "Clock.h"

namespace sim {

bool Clock::advance(Instant due, bool /*interruptible*/) {
    if (due == kNever) {
        return false;  // Nothing will ever be due again.
    }
    moveTo(due);
    return true;
}

}  // namespace sim
