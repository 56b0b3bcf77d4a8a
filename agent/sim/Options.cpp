#include "Options.h"

#include "Scenario.h"

#include <filesystem>

#include <getopt.h>
#include <unistd.h>

namespace sim {

namespace {

/// Where the module lies in a build and in an installed tree.
std::string defaultModule() {
    const auto program = std::filesystem::read_symlink("/proc/self/exe");
    return (program.parent_path().parent_path() / "lib" / "libZephanRSMLogger.so").string();
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
    R"(usage: krx-agent-sim replay SCENARIO [--module PATH] [--trace FILE] [--report FILE]
       krx-agent-sim run [SCENARIO] [--module PATH] [--trace FILE] [--report FILE] [--http [ADDRESS:]PORT]
       krx-agent-sim report TRACE -o FILE [--config FILE] [--clock TIME]
       krx-agent-sim status [--config FILE] [--schedule FILE] [--json]

Loads the module as an agent does and drives it: `replay` plays a scenario on a virtual clock, `run` on the real
clock, with actions from the scenario at their times and from standard input as they are typed. `report` makes the
page of a session from a trace that was kept; `status` says what an agent that does not run left in its state files, and
what its next start does with it.

  --module PATH   the module (default: ../lib/libZephanRSMLogger.so beside the program's directory)
  --trace FILE    writes JSON Lines instead of the timeline; - is standard output
  --report FILE   writes a page of the session (HTML) when it is over; -o is the same
  --http PLACE    a live page of the session for browsers, at [ADDRESS:]PORT (127.0.0.1 when there is no address; port
                  0: any that is free); the session goes on until it is interrupted
  --config FILE   the configuration whose audit texts the page shows (default: the one that the session names)
  --schedule FILE the schedule file that the agent's data source was started with
  --json          writes the status as JSON
  --clock TIME    the wall clock at the trace's start, like 2026-03-01T10:00:00Z (default: as the reports show it)
  --help          prints this text
  --version       prints the version

Exit status: 0 ran to the end, 1 a scenario line or the module could not be used, 2 wrong usage.
)";

Options parseOptions(int count, char** words) {
    enum Option : int {
        module = 'm',
        trace = 't',
        report = 'o',
        schedule = 's',
        json = 'j',
        http = 'w',
        config = 'c',
        clock = 'k',
        help = 'h',
        version = 'v'
    };
    const option known[] = {{"module", required_argument, nullptr, module},
                            {"trace", required_argument, nullptr, trace},
                            {"report", required_argument, nullptr, report},
                            {"http", required_argument, nullptr, http},
                            {"config", required_argument, nullptr, config},
                            {"schedule", required_argument, nullptr, schedule},
                            {"json", no_argument, nullptr, json},
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
            case report:
                options.report = ::optarg;
                break;
            case http:
                options.http = ::optarg;
                break;
            case config:
                options.configuration = ::optarg;
                break;
            case schedule:
                options.schedule = ::optarg;
                break;
            case json:
                options.json = true;
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
    if (command != "replay" && command != "run" && command != "report" && command != "status") {
        throw UsageError(command.empty() ? "no command" : "unknown command " + command);
    }
    if (command == "status") {
        options.mode = Options::Mode::status;
        if (positional > 1) {
            throw UsageError(std::string("unexpected argument ") + words[::optind + 1]);
        }
        if (!options.configuration && !options.schedule) {
            throw UsageError("no file to tell the status from (--config FILE, --schedule FILE)");
        }
        return options;
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
    if (options.http && options.mode != Options::Mode::run) {
        throw UsageError("--http is for a session on the real clock (run)");
    }
    if (!file && options.mode == Options::Mode::replay) {
        throw UsageError("no scenario to replay");
    }
    if (options.module.empty()) {
        options.module = defaultModule();
    }
    return options;
}

}  // namespace sim
