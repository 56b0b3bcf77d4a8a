// The timeline that a person reads.
#pragma once

#include <string>

namespace sim {

struct Event;

/// One event as a line: instant, clock, who, and in words what happened. Line ends in texts are escaped.
std::string asTimeline(const Event& event);
/// The same in fewer columns, and without what only a developer wants to know. `what` stands for what
/// happened, if it is not empty.
std::string asBrief(const Event& event, const std::string& what = {});

}  // namespace sim
