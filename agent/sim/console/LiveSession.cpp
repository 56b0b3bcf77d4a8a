#include "sim/console/LiveSession.h"

#include "session/SessionPage.h"
#include "sim/trace/EventFields.h"
#include "sim/trace/RecordedEvent.h"

#include <algorithm>

namespace sim {

void LiveSession::onEvent(const Event& event) noexcept {
    {
        const std::lock_guard lock(mutex_);
        addTo(record_, event);
        record_.data().keepLast(kMostEvents);
        const bool succeeded = numberOf(event, "result") == 0;
        if (event.name == "credentials") {
            member_ = textOf(event, "member").value_or("");
        } else if (event.name == "update-asset" && succeeded) {
            profile_ = Profile{member_, listOf(event, "properties")};
        } else if (event.name == "call" && succeeded) {
            starts_.note(textOf(event, "verb").value_or(""));
        }
    }
    bell_.ring();
}

void LiveSession::close() {
    {
        const std::lock_guard lock(mutex_);
        over_ = true;
    }
    bell_.ring();
}

std::string LiveSession::page() const {
    const std::lock_guard lock(mutex_);
    return session::sessionPage(record_, true);
}

LiveSession::News LiveSession::news(std::uint64_t first) const {
    const std::lock_guard lock(mutex_);
    const std::uint64_t there = std::max(first, record_.data().dropped());
    return {there, record_.data().lines(there, kMostLines), over_, "{" + record_.data().marks() + "}"};
}

}  // namespace sim
