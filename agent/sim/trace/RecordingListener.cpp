#include "sim/trace/RecordingListener.h"

#include "sim/trace/Event.h"

namespace sim {

namespace {

std::int64_t milliseconds(std::chrono::microseconds time) {
    return std::chrono::floor<std::chrono::milliseconds>(time).count();
}

}  // namespace

void RecordingListener::onEvent(const Event& event) noexcept {
    const std::int64_t time = milliseconds(event.time);
    if (event.name == "clock-step" || !record_.data().hasClock()) {
        record_.data().setClock(time, milliseconds(event.wall));
    }
    if (event.name == "unload") {
        record_.data().addKill(time);
    } else if (event.name != "clock-step" && event.name != "audit") {
        std::string line = asJson(event);
        line.pop_back();
        record_.addLine(line);
    }
}

}  // namespace sim
