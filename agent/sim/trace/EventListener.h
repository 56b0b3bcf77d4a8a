#pragma once

namespace sim {

struct Event;

/// Told of every event right after it happened, by the thread that has the turn. Calls must not throw: they
/// stand between module frames.
class EventListener {
  public:
    virtual ~EventListener() = default;

    virtual void onEvent(const Event& event) noexcept = 0;
};

}  // namespace sim
