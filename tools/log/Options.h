// The command line.
#pragma once

#include "EntryWriter.h"
#include "common/CommandLine.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace logreader {

using tools::UsageError;

struct Options {
    enum class Mode : std::uint8_t { read, files, diskUsage };

    Mode mode = Mode::read;
    std::optional<std::string> since;
    std::optional<std::string> until;
    std::optional<std::string> grep;
    std::optional<std::string> exclude;
    bool ignoreCase = false;
    bool follow = false;
    bool reverse = false;
    std::size_t context = 0;          ///< entries around each
    std::optional<std::size_t> last;  ///< entries to begin with, counted from the end
    std::optional<std::string> cursorFile;
    Form form = Form::shown;
    bool pager = true;  ///< on a terminal
    bool quiet = false;
    std::optional<std::string> zone;
    std::optional<std::string> logZone;
    std::optional<std::string> config;
    std::vector<std::string> files;  ///< "-" stands for standard input
};

std::vector<tools::OptionRow> optionRows();
/// Throws UsageError.
Options readOptions(const tools::CommandLine& given);

extern const char* const kHelp;

}  // namespace logreader
