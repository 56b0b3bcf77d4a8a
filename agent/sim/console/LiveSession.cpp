#include "console/LiveSession.h"

#include "EventFields.h"
#include "Words.h"
#include "report/SessionPage.h"

#include <algorithm>

namespace sim {

namespace {

constexpr std::size_t kMostLines = 500;  // at once
constexpr std::string_view kStart = "start ";

}  // namespace

void LiveSession::onEvent(const Event& event) noexcept {
    {
        const std::lock_guard lock(mutex_);
        record_.onEvent(event);
        const bool succeeded = numberOf(event, "result") == 0;
        if (event.name == "credentials") {
            member_ = textOf(event, "member").value_or("");
        } else if (event.name == "update-asset" && succeeded) {
            profile_ = Profile{member_, listOf(event, "properties")};
        } else if (event.name == "call" && succeeded) {
            noteStart(textOf(event, "verb").value_or(""));
        }
    }
    changed_.notify_all();
}

void LiveSession::noteStart(const std::string& verb) {
    if (!verb.starts_with(kStart)) {
        return;
    }
    const std::size_t end = std::min(verb.find(' ', kStart.size()), verb.size());
    const std::string family = verb.substr(0, end);
    // The trace has the words without their quotes.
    std::string line = family;
    if (end < verb.size()) {
        const std::string argument = verb.substr(end + 1);
        line += " " + (argument == "null" ? argument : inQuotes(argument));
    }
    const auto known = std::find_if(starts_.begin(), starts_.end(),
                                    [&family](const auto& start) { return start.first == family; });
    if (known == starts_.end()) {
        starts_.emplace_back(family, line);
    } else {
        known->second = line;
    }
}

void LiveSession::close() {
    {
        const std::lock_guard lock(mutex_);
        over_ = true;
    }
    changed_.notify_all();
}

std::string LiveSession::page() const {
    const std::lock_guard lock(mutex_);
    return sessionPage(record_, true);
}

LiveSession::News LiveSession::wait(std::uint64_t first, std::chrono::milliseconds time) const {
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, time, [&] { return over_ || record_.data().size() > first; });
    return {record_.data().lines(first, kMostLines), over_};
}

std::optional<LiveSession::Profile> LiveSession::profile() const {
    const std::lock_guard lock(mutex_);
    return profile_;
}

std::vector<std::string> LiveSession::startLines() const {
    const std::lock_guard lock(mutex_);
    std::vector<std::string> lines;
    for (const auto& [family, line] : starts_) {
        lines.push_back(line);
    }
    return lines;
}

}  // namespace sim
