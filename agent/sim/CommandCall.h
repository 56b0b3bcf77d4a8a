// One command for the data source.
#pragma once

#include "Enterprise.h"
#include "Words.h"

#include <optional>
#include <vector>

namespace sim {

class Module;

struct CommandAnswer {
    int result = 0;
    std::optional<agent::NamedValues> properties;
};

/// Runs a command; without `properties` the list is null. The answer is copied and given back.
CommandAnswer runCommand(const Module& module, const char* command,
                         std::optional<std::vector<Assignment>> properties);

}  // namespace sim
