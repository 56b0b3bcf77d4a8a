// The command line.
#pragma once

#include "common/CommandLine.h"

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace sim {

struct Options {
    bool real = false;  ///< on the real clock
    std::optional<std::string> scenario;
    std::string module;
    std::optional<std::string> trace;  ///< "-" stands for standard output
    bool brief = false;                ///< less to read
    bool strict = false;               ///< a start that failed shows in the exit status
    /// How long the module may hold everything up. At first longer than any of its calls takes, with a
    /// sanitizer on a busy machine, too.
    std::chrono::milliseconds patience = std::chrono::seconds(15);
    std::optional<std::string> report;  ///< the page's file
    std::optional<std::string> http;    ///< where the console listens
    std::optional<std::string> configuration;
};

/// The options of the command line.
std::vector<tools::OptionRow> optionRows();
/// Throws UsageError.
Options readOptions(const tools::CommandLine& given);

extern const char* const kHelp;

}  // namespace sim
