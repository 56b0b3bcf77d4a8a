#include "sim/trace/RecordedEvent.h"

#include <chrono>
#include <string>

namespace sim {

void addTo(session::SessionRecord& record, const Event& event) noexcept {
    const auto milliseconds = [](std::chrono::microseconds time) {
        return std::chrono::floor<std::chrono::milliseconds>(time).count();
    };
    const std::int64_t time = milliseconds(event.time);
    if (event.name == "clock-step" || !record.data().hasClock()) {
        record.data().setClock(time, milliseconds(event.wall));
    }
    if (event.name == "unload") {
        record.data().addKill(time);
    } else if (event.name != "clock-step" && event.name != "audit") {
        std::string line = asJson(event);
        line.pop_back();
        record.addLine(line);
    }
}

}  // namespace sim
