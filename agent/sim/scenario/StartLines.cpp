#include "sim/scenario/StartLines.h"

#include "sim/scenario/Words.h"

#include <algorithm>

namespace sim {

void StartLines::note(const std::string& verb) {
    if (!verb.starts_with(kStart)) {
        return;
    }
    const std::size_t end = verb.find(' ', kStart.size());
    const std::string family = verb.substr(0, end);
    std::string line = family;
    // The trace has the words without their quotes.
    if (end != std::string::npos) {
        const std::string argument = verb.substr(end + 1);
        line += " " + (argument == "null" ? argument : inQuotes(argument));
    }
    const auto known = std::find_if(lines_.begin(), lines_.end(), [&](const std::string& start) {
        return (start + " ").starts_with(family + " ");
    });
    (known == lines_.end() ? lines_.emplace_back() : *known) = line;
}

}  // namespace sim
