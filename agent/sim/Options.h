// The command line.
#pragma once

#include "common/CommandLine.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace sim {

using tools::UsageError;

struct Options {
    enum class Mode : std::uint8_t { replay, run, help, version };

    Mode mode = Mode::help;
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

/// Throws UsageError.
Options parseOptions(int count, char** words);

extern const char* const kHelp;

}  // namespace sim
