// How an event of the simulator gets into the record of a session's page.
#pragma once

#include "session/SessionRecord.h"
#include "sim/trace/Event.h"

namespace sim {

/// Adds what happens to a record, as a line of a trace where it is one.
void addTo(session::SessionRecord& record, const Event& event) noexcept;

}  // namespace sim
