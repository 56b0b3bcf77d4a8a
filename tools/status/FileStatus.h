// The status of an agent that does not run.
#pragma once

#include <cstdint>
#include <string>

namespace status {

struct StateFiles;

/// What is told below the sentence, all of which changes with the files or a minute that is over.
std::string detailsText(const StateFiles& files, std::int64_t now);
/// One sentence, and details below it.
std::string fileStatusText(const StateFiles& files, std::int64_t now);
/// The same as a JSON object.
std::string fileStatusJson(const StateFiles& files, std::int64_t now);

}  // namespace status
