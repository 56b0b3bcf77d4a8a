#pragma once

#include <string>

struct option;

namespace tools {

/// What `getopt_long` has just refused: a letter wherever in a word it stands, a long option as it was written.
std::string wrongOption(int found, const option* known, char** words);

}  // namespace tools
