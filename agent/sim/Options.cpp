#include "sim/Options.h"

#include "sim/System.h"
#include "sim/scenario/Scenario.h"
#include "sim/scenario/Verbs.h"

#include <string_view>

namespace sim {

namespace {

using tools::UsageError;

enum Option : int { module = tools::kLong, trace, patience, brief, strict, http, config };

std::chrono::milliseconds parsePatience(const std::string& text) {
    const auto microseconds = parseDecimal(text);
    if (!microseconds || *microseconds < 1000) {
        throw UsageError("'" + text + "' is not a time in seconds");
    }
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::microseconds(*microseconds));
}

}  // namespace

const char* const kHelp =
    R"(Usage: krx-agent-sim replay SCENARIO [--module PATH] [--brief | --trace FILE] [--report FILE] [--strict] [--patience S]
  or:  krx-agent-sim run [SCENARIO] [--http [ADDRESS:]PORT] [OPTION OF replay]...

Loads the module as an agent does and drives it: `replay` plays a scenario on a virtual clock, `run` on the real
clock, with actions from the scenario at their times and from standard input as they are typed (`help` lists them).
The page of a kept trace is made by zephan-session; what a stopped agent left behind is told by
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
  -h, --help      prints this text
  -V, --version   prints the version

Exit status: 0 ran to the end, 1 a scenario line or the module could not be used, or the module hangs, 2 wrong usage,
3 (with --strict or --report) a start failed.

Examples:
  $ krx-agent-sim replay --brief --report visit.html service-visit.scenario
  $ krx-agent-sim run --http 8080 service-visit.scenario
  $ krx-agent-sim replay --trace trace.jsonl service-visit.scenario
)";

std::vector<tools::OptionRow> optionRows() {
    return {{"module", module}, {"trace", trace},     {"patience", patience}, {"report", 'o'},
            {"config", config}, {"brief", brief, ""}, {"strict", strict, ""}, {"http", http}};
}

Options readOptions(const tools::CommandLine& given) {
    Options options;
    const std::string command = given.words.empty() ? "" : given.words.front();
    if (command != "replay" && command != "run") {
        throw UsageError(command.empty() ? "no command" : "unknown command " + command);
    }
    if (given.words.size() > 2) {
        throw UsageError("unexpected argument " + given.words[2]);
    }
    options.real = command == "run";
    if (given.words.size() > 1) {
        options.scenario = given.words[1];
    }
    options.trace = given.value(trace);
    if (given.has(patience)) {
        options.patience = parsePatience(*given.value(patience));
    }
    options.report = given.value('o');
    options.configuration = given.value(config);
    options.brief = given.has(brief);
    options.strict = given.has(strict);
    options.http = given.value(http);
    if (options.http && command == "replay") {
        throw UsageError("--http is for a session on the real clock (run)");
    }
    if (!options.scenario && command == "replay") {
        throw UsageError("no scenario to replay");
    }
    if (options.brief && options.trace) {
        throw UsageError("--brief is for the timeline, not for a trace");
    }
    options.module = given.value(module).value_or("");
    if (options.module.empty()) {
        options.module = system::moduleBesideProgram();
    }
    return options;
}

}  // namespace sim
