// A scenario file.
#pragma once

#include "sim/scenario/Verbs.h"

#include <chrono>
#include <istream>
#include <optional>
#include <string>
#include <vector>

namespace sim {

/// Actions in the order of their times, and where the wall clock starts.
struct Scenario {
    std::vector<Action> actions;
    std::optional<std::chrono::seconds> clock;  ///< since 1970
};

/// "FILE:LINE: reason".
std::string located(const std::string& file, int line, const std::string& reason);

/// Reads the whole scenario and checks every line. Throws std::runtime_error ("FILE:LINE: reason") at the
/// first one that cannot be used.
Scenario readScenario(std::istream& stream, const std::string& file);
Scenario readScenarioFile(const std::string& file);

/// The comment that the file begins with, its lines joined by blanks; empty when there is none.
std::string leadingComment(const std::string& file);

}  // namespace sim
