// krx-agent-sim: loads the module as an agent does and drives it with a scenario.
#include "sim/Options.h"
#include "sim/Session.h"

#include <exception>
#include <iostream>

namespace {

using sim::Options;

enum ExitStatus : int { ranToEnd = 0, unusable = 1, wrongUsage = 2, startFailed = 3 };

ExitStatus simulate(const Options& options) {
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
    try {
        const Options options = sim::parseOptions(count, words);
        switch (options.mode) {
            case Options::Mode::help:
                std::cout << sim::kHelp;
                return ranToEnd;
            case Options::Mode::version:
                std::cout << "krx-agent-sim " SIM_VERSION "\n";
                return ranToEnd;
            case Options::Mode::replay:
            case Options::Mode::run:
                return simulate(options);
        }
    } catch (const sim::UsageError& error) {
        std::cerr << "krx-agent-sim: " << error.what() << "\nTry krx-agent-sim --help.\n";
        return wrongUsage;
    } catch (const std::exception& error) {
        std::cerr << error.what() << std::endl;
    }
    return unusable;
}
