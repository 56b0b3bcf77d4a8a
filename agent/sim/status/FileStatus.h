// `status` for an agent that does not run.
#pragma once

#include <cstdint>
#include <string>

namespace sim {

struct StateFiles;

/// One sentence, and details below it.
std::string fileStatusText(const StateFiles& files, std::int64_t now);
/// The same as a JSON object.
std::string fileStatusJson(const StateFiles& files, std::int64_t now);

/// The path of the resume state file that a configuration names. Throws std::runtime_error with the reason
/// when the configuration cannot be read.
std::string resumePathOf(const std::string& configurationFile);

}  // namespace sim
