// The clock of a simulation in real time.
#pragma once

#include "sim/time/Clock.h"

namespace sim {

class Input;

/// Moves from one due instant to the next as a virtual clock does, but only when real time has come so
/// far: events keep the order and the instants that they have on a virtual clock, however late the system
/// runs a thread.
class RealClock final : public Clock {
  public:
    /// `input` interrupts waits; it must outlive the clock.
    RealClock(std::chrono::microseconds start, Input& input);

    bool advance(Instant due, bool interruptible) override;

    /// The time that has passed, on any thread; `now` follows it when something happens.
    Instant elapsed() const;

  private:
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    Input& input_;
};

}  // namespace sim
