#include "sim/console/LiveSession.h"

#include "session/SessionPage.h"
#include "sim/scenario/Words.h"
#include "sim/trace/EventFields.h"

#include <algorithm>

namespace sim {

void LiveSession::onEvent(const Event& event) noexcept {
    {
        const std::lock_guard lock(mutex_);
        take(record_, event);
        record_.data().keepLast(kMostEvents);
        const bool succeeded = numberOf(event, "result") == 0;
        if (event.name == "credentials") {
            member_ = textOf(event, "member").value_or("");
        } else if (event.name == "update-asset" && succeeded) {
            profile_ = Profile{member_, listOf(event, "properties")};
        } else if (event.name == "call" && succeeded &&
                   textOf(event, "verb").value_or("").starts_with(kStart)) {
            noteStart(*textOf(event, "verb"));
        }
    }
    bell_.ring();
}

void LiveSession::take(session::SessionRecord& record, const Event& event) noexcept {
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

void LiveSession::noteStart(const std::string& verb) {
    const std::size_t end = verb.find(' ', kStart.size());
    const std::string family = verb.substr(0, end);
    std::string line = family;
    // The trace has the words without their quotes.
    if (end != std::string::npos) {
        const std::string argument = verb.substr(end + 1);
        line += " " + (argument == "null" ? argument : inQuotes(argument));
    }
    const auto known = std::find_if(starts_.begin(), starts_.end(), [&](const std::string& start) {
        return (start + " ").starts_with(family + " ");
    });
    (known == starts_.end() ? starts_.emplace_back() : *known) = line;
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
