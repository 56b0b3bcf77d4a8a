// krx-agent-sim: loads the module as an agent does and drives it with a scenario.
#include "common/Program.h"
#include "sim/Options.h"
#include "sim/Session.h"

#include <iostream>
#include <string_view>

namespace {

enum ExitStatus : int { ranToEnd = 0, unusable = 1, wrongUsage = 2, startFailed = 3 };

int simulate(const tools::CommandLine& given) {
    const sim::Options options = sim::readOptions(given);
    sim::Session session(options);
    if (!session.run()) {
        return unusable;
    }
    if (session.startFailed() && options.report) {
        std::cerr << "krx-agent-sim: a start failed, so the page shows another session than was meant. "
                     "Files are looked for in the working directory."
                  << std::endl;
    }
    return session.startFailed() && (options.strict || options.report) ? startFailed : ranToEnd;
}

}  // namespace

int main(int count, char** words) {
    const std::string_view first = count > 1 ? words[1] : "";
    if (first == "report" || first == "status") {
        std::cerr << "krx-agent-sim: " << first << " is a program of its own now: zephan-"
                  << (first == "report" ? "session" : "status") << "\nTry krx-agent-sim --help.\n";
        return wrongUsage;
    }
    return tools::runProgram({.name = "krx-agent-sim",
                              .version = SIM_VERSION,
                              .help = sim::kHelp,
                              .signs = false,
                              .options = sim::optionRows()},
                             count, words, simulate);
}
