#include "sim/Options.h"

#include "sim/Scenario.h"
#include "sim/System.h"
#include "sim/Verbs.h"

#include <string_view>
#include <vector>

#include <getopt.h>

namespace sim {

namespace {

std::chrono::milliseconds parsePatience(const std::string& text) {
    const auto microseconds = parseDecimal(text);
    if (!microseconds || *microseconds < 1000) {
        throw UsageError("'" + text + "' is not a time in seconds");
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
    R"(Usage: krx-agent-sim replay SCENARIO [--module PATH] [--brief | --trace FILE] [--report FILE] [--strict] [--patience S]
  or:  krx-agent-sim run [SCENARIO] [--http [ADDRESS:]PORT] [OPTION OF replay]...
  or:  krx-agent-sim report TRACE -o FILE [--config FILE] [--clock TIME]

Loads the module as an agent does and drives it: `replay` plays a scenario on a virtual clock, `run` on the real
clock, with actions from the scenario at their times and from standard input as they are typed (`help` lists them).
`report` makes the page of a session from a trace that was kept. What a stopped agent left behind is told by
zephan-status.

  --module PATH   the module (default: the one installed or built with this program)
  --trace FILE    writes JSON Lines instead of the timeline; - is standard output
  --brief         a timeline with less to read: no log lines, no sleeps, polls counted, lines that fit
  --strict        exit status 3 when the start of a family failed
  --patience S    seconds for which the module may hold everything up before it counts as hanging (default: 15)
  --report FILE   writes a page of the session (HTML) when it is over; -o is the same
  --http PLACE    a live page of the session for browsers, at [ADDRESS:]PORT (127.0.0.1 when there is no address; port
                  0: any that is free); the session goes on until it is interrupted
  --config FILE   the configuration whose audit texts the page shows (default: the one that the session names)
  --clock TIME    the wall clock at the trace's start, like 2026-03-01T10:00:00Z (default: as the reports show it)
  -h, --help      prints this text
  -V, --version   prints the version

Exit status: 0 ran to the end, 1 a scenario line or the module could not be used, or the module hangs, 2 wrong usage,
3 (with --strict or --report) a start failed.

Examples:
  $ krx-agent-sim replay --brief --report visit.html service-visit.scenario
  $ krx-agent-sim run --http 8080 service-visit.scenario
  $ krx-agent-sim report trace.jsonl -o visit.html
)";

namespace {

/// Takes the options, which end at `optind`. False when what follows does not matter.
bool readOptions(int count, char** words, Options& options) {
    enum Option : int {
        module = 1,
        trace,
        patience,
        brief,
        strict,
        http,
        config,
        clock,
        report = 'o',
        help = 'h',
        version = 'V'
    };
    const option known[] = {{"module", required_argument, nullptr, module},
                            {"trace", required_argument, nullptr, trace},
                            {"patience", required_argument, nullptr, patience},
                            {"report", required_argument, nullptr, report},
                            {"config", required_argument, nullptr, config},
                            {"clock", required_argument, nullptr, clock},
                            {"brief", no_argument, nullptr, brief},
                            {"strict", no_argument, nullptr, strict},
                            {"http", required_argument, nullptr, http},
                            {"help", no_argument, nullptr, help},
                            {"version", no_argument, nullptr, version},
                            {nullptr, 0, nullptr, 0}};
    for (int found = 0; (found = ::getopt_long(count, words, ":ho:V", known, nullptr)) != -1;) {
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
            case brief:
                options.brief = true;
                break;
            case strict:
                options.strict = true;
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
            case clock:
                options.clock = clockOption(::optarg);
                break;
            case help:
                options.mode = Options::Mode::help;
                return false;
            case version:
                options.mode = Options::Mode::version;
                return false;
            default:
                throw UsageError(std::string(found == ':' ? "no value for option " : "unknown option ") +
                                 words[::optind - 1]);
        }
    }
    return true;
}

void readReport(const std::optional<std::string>& trace, Options& options) {
    options.mode = Options::Mode::report;
    if (!trace || !options.report) {
        throw UsageError(trace ? "no file for the page (-o FILE)" : "no trace to report");
    }
    options.keptTrace = *trace;
}

void readSession(bool real, const std::optional<std::string>& scenario, Options& options) {
    options.mode = real ? Options::Mode::run : Options::Mode::replay;
    options.scenario = scenario;
    if (options.http && !real) {
        throw UsageError("--http is for a session on the real clock (run)");
    }
    if (!scenario && !real) {
        throw UsageError("no scenario to replay");
    }
    if (options.brief && options.trace) {
        throw UsageError("--brief is for the timeline, not for a trace");
    }
    if (options.module.empty()) {
        options.module = system::moduleBesideProgram();
    }
}

/// Takes the command and its file, and looks whether the options fit them.
void readCommand(const std::vector<std::string>& words, Options& options) {
    const std::string command = words.empty() ? "" : words.front();
    if (command != "replay" && command != "run" && command != "report") {
        throw UsageError(command.empty() ? "no command" : "unknown command " + command);
    }
    if (words.size() > 2) {
        throw UsageError("unexpected argument " + words[2]);
    }
    const std::optional<std::string> file = words.size() > 1 ? std::optional(words[1]) : std::nullopt;
    if (command == "report") {
        readReport(file, options);
    } else {
        readSession(command == "run", file, options);
    }
}

}  // namespace

Options parseOptions(int count, char** words) {
    Options options;
    if (count > 1 && std::string_view(words[1]) == "status") {
        throw UsageError("status is a program of its own now: zephan-status");
    }
    if (readOptions(count, words, options)) {
        readCommand({words + ::optind, words + count}, options);
    }
    return options;
}

}  // namespace sim
