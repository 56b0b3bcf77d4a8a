// What the main function of each program does.
#pragma once

#include "common/CommandLine.h"

#include <functional>
#include <string>
#include <vector>

namespace tools {

struct Program {
    const char* name;
    const char* version;
    const char* help;
    int failed = 1;     ///< the exit status when it cannot do what it is for; that of wrong usage is 2
    bool signs = true;  ///< what an exception says comes with the program's name
    /// The options beside --help and --version.
    std::vector<OptionRow> options;
};

/// Runs `run` with what the command line says, unless that asks for a text, which is printed. The exit status: 0, or
/// what `run` answers. Exceptions, and output that could not be written, are told on standard error.
int runProgram(const Program& program, int count, char** words,
               const std::function<int(const CommandLine&)>& run);

}  // namespace tools
