#include "Options.h"

#include "Scenario.h"
#include "Verbs.h"

#include <filesystem>

#include <getopt.h>
#include <unistd.h>

namespace sim {

namespace {

/// The module: in an installed tree or a build beside the program's directory, else where the loader finds it.
std::string defaultModule() {
    std::string name = "libZephanRSMLogger.so.1";
    const auto tree = std::filesystem::read_symlink("/proc/self/exe").parent_path().parent_path();
    for (const char* directory : {SIM_LIBRARY_DIRECTORY, "lib"}) {
        if (const auto path = tree / directory / name; std::filesystem::exists(path)) {
            return path.lexically_normal().string();
        }
    }
    return name;
}

std::chrono::milliseconds parsePatience(const std::string& text) {
    const auto microseconds = parseDecimal(text);
    if (!microseconds || *microseconds < 1000) {
        throw UsageError("'" + text + "' is no time in seconds");
    }
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::microseconds(*microseconds));
}

std::chrono::seconds clockOption(const char* text) {
    try {
        return parseClock(text);
    } catch (const std::runtime_error& error) {
        throw UsageError(error.what());
    }
}

}  // namespace

const char* const kHelp =
    R"(Usage: krx-agent-sim replay SCENARIO [--module PATH] [--trace FILE] [--report FILE]
  or:  krx-agent-sim run [SCENARIO] [--module PATH] [--trace FILE] [--report FILE]
  or:  krx-agent-sim report TRACE -o FILE [--config FILE] [--clock TIME]

Loads the module as an agent does and drives it: `replay` plays a scenario on a virtual clock, `run` on the real
clock, with actions from the scenario at their times and from standard input as they are typed. `report` makes the
page of a session from a trace that was kept.

  --module PATH   the module (default: the one installed or built with this program)
  --trace FILE    writes JSON Lines instead of the timeline; - is standard output
  --patience S    seconds for which the module may hold everything up before it counts as hanging (15 at first)
  --report FILE   writes a page of the session (HTML) when it is over; -o is the same
  --config FILE   the configuration whose audit texts the page shows (default: the one that the session names)
  --clock TIME    the wall clock at the trace's start, like 2026-03-01T10:00:00Z (default: as the reports show it)
  --help          prints this text
  --version       prints the version

Exit status: 0 ran to the end, 1 a scenario line or the module could not be used, or the module hangs, 2 wrong usage.
)";

Options parseOptions(int count, char** words) {
    enum Option : int {
        module = 'm',
        trace = 't',
        patience = 'p',
        report = 'o',
        config = 'c',
        clock = 'k',
        help = 'h',
        version = 'v'
    };
    const option known[] = {{"module", required_argument, nullptr, module},
                            {"trace", required_argument, nullptr, trace},
                            {"patience", required_argument, nullptr, patience},
                            {"report", required_argument, nullptr, report},
                            {"config", required_argument, nullptr, config},
                            {"clock", required_argument, nullptr, clock},
                            {"help", no_argument, nullptr, help},
                            {"version", no_argument, nullptr, version},
                            {nullptr, 0, nullptr, 0}};
    Options options;
    for (int found = 0; (found = ::getopt_long(count, words, ":o:", known, nullptr)) != -1;) {
        switch (found) {
            case module:
                options.module = ::optarg;
                break;
            case trace:
                options.trace = ::optarg;
                break;
            case patience:
                options.patience = parsePatience(::optarg);
                break;
            case report:
                options.report = ::optarg;
                break;
            case config:
                options.configuration = ::optarg;
                break;
            case clock:
                options.clock = clockOption(::optarg);
                break;
            case help:
                options.mode = Options::Mode::help;
                return options;
            case version:
                options.mode = Options::Mode::version;
                return options;
            default:
                throw UsageError(std::string(found == ':' ? "no value for option " : "unknown option ") +
                                 words[::optind - 1]);
        }
    }
    const int positional = count - ::optind;
    const std::string command = positional > 0 ? words[::optind] : "";
    if (command != "replay" && command != "run" && command != "report") {
        throw UsageError(command.empty() ? "no command" : "unknown command " + command);
    }
    if (positional > 2) {
        throw UsageError(std::string("unexpected argument ") + words[::optind + 2]);
    }
    const std::optional<std::string> file =
        positional == 2 ? std::optional<std::string>(words[::optind + 1]) : std::nullopt;
    if (command == "report") {
        options.mode = Options::Mode::report;
        if (!file || !options.report) {
            throw UsageError(file ? "no file for the page (-o FILE)" : "no trace to report");
        }
        options.keptTrace = *file;
        return options;
    }
    options.mode = command == "run" ? Options::Mode::run : Options::Mode::replay;
    options.scenario = file;
    if (!file && options.mode == Options::Mode::replay) {
        throw UsageError("no scenario to replay");
    }
    if (options.module.empty()) {
        options.module = defaultModule();
    }
    return options;
}

}  // namespace sim
