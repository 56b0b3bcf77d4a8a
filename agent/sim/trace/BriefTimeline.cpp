#include "sim/trace/BriefTimeline.h"

#include "sim/trace/Timeline.h"

#include <utility>

namespace sim {

std::string BriefTimeline::add(const Event& event) {
    if (event.name == "log" || event.name == "stdout" || event.name == "sleep") {
        return {};
    }
    if (event.name == "force-poll") {
        (polls_++ == 0 ? firstPoll_ : lastPoll_) = event;
        return live_ && event.time - firstPoll_.time >= std::chrono::minutes(1) ? end() : "";
    }
    std::string lines = end();
    std::string line = fitted(asBrief(event));
    if (line != previous_) {
        lines += line;
    }
    previous_ = std::move(line);
    return lines;
}

std::string BriefTimeline::end() {
    const int polls = std::exchange(polls_, 0);
    if (polls == 0) {
        return {};
    }
    previous_.clear();
    return fitted(asBrief(firstPoll_, polls == 1 ? "1 poll"
                                                 : std::to_string(polls) + " polls, the last at " +
                                                       secondsText(lastPoll_.time) + " s"));
}

/// Cut behind the last character for which there is room, with a sign that it is.
std::string BriefTimeline::fitted(std::string line) const {
    std::size_t columns = 0;
    std::size_t cut = 0;
    for (std::size_t at = 0; at + 1 < line.size(); ++at) {  // the line end has no column
        const bool beginsCharacter = (static_cast<unsigned char>(line[at]) & 0xC0) != 0x80;
        if (beginsCharacter && columns++ == width_ - 1) {
            cut = at;
        }
    }
    return columns <= width_ ? line : line.substr(0, cut) + "\u2026\n";
}

}  // namespace sim
