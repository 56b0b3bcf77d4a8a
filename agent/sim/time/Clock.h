// The time of a simulation.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>

namespace sim {

/// Since the start of the simulation.
using Instant = std::chrono::microseconds;

constexpr Instant kNever = Instant::max();

/// Two times in one: `now` counts from the start and only `advance` moves it; the wall clock goes along,
/// and can be stepped. On its own the clock is virtual: it jumps. One thread at a time moves it; any thread
/// may read it.
class Clock {
  public:
    /// `start` is the wall clock's time at instant 0, since 1970.
    explicit Clock(std::chrono::microseconds start) : wallOffset_(start.count()) {}
    Clock(const Clock&) = delete;
    Clock& operator=(const Clock&) = delete;
    virtual ~Clock() = default;

    Instant now() const { return Instant(now_); }
    /// The wall clock, since 1970.
    std::chrono::microseconds wall() const { return std::chrono::microseconds(now_ + wallOffset_); }
    /// Lets the wall clock jump.
    void step(std::chrono::microseconds by) { wallOffset_ += by.count(); }

    /// Moves to `due`, which is not past. False when something came in before (only if `interruptible`).
    virtual bool advance(Instant due, bool /*interruptible*/) {
        if (due == kNever) {
            return false;  // Nothing will ever be due again.
        }
        moveTo(due);
        return true;
    }

  protected:
    void moveTo(Instant instant) { now_ = instant.count(); }

  private:
    std::atomic<std::int64_t> now_ = 0;
    std::atomic<std::int64_t> wallOffset_;
};

}  // namespace sim
