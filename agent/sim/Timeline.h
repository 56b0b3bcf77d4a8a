// The timeline that a person reads.
#pragma once

#include <string>

namespace sim {

struct Event;

/// One event as a line: instant, clock, who, and what happened in words. Texts keep their line ends as
/// escapes.
std::string asTimeline(const Event& event);

}  // namespace sim
