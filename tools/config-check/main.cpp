// zephan-config-check: the faults of a configuration, and the settings in force.
#include "Rules.h"
#include "common/Program.h"

#include <algorithm>
#include <iostream>

namespace {

constexpr char kHelp[] = R"(Usage: zephan-config-check [OPTION]... FILE...
Check configuration files of ZephanRSMLogger and show the settings in force.

Each FILE is read as the module reads it, and whatever is most likely a mistake is
printed as FILE:LINE:COLUMN: error: TEXT [KIND] or warning: TEXT [KIND], with
the line that it is in. The settings in force follow, each with the line
that it comes from or "default". Relative paths in FILE are taken from the
working directory: run the program where the agent runs, as its user.
No file that FILE names is opened; only the attributes of the files that the
module would write, and the folder of its log, are looked at.

  -q, --quiet            print findings only, no settings
  -j, --json             print one JSON document
  -s, --schedule=PATH    also check PATH, the schedule file that the agent gives
                         to the data-source start-up
  -h, --help             print this text and end
  -V, --version          print the version and end

Exit status:
  0  nothing was found
  1  something was found
  2  wrong usage, or a FILE could not be read

Examples:
  $ zephan-config-check zephan-config.xml
  $ zephan-config-check --quiet --schedule=state/schedule.xml zephan-config.xml
)";

enum ExitStatus : int { nothingFound = 0, somethingFound = 1, failed = 2 };

int run(const tools::CommandLine& given) {
    const std::optional<std::string> schedule = given.value('s');
    if (given.words.empty()) {
        throw tools::UsageError("no FILE to check");
    }
    if (schedule && schedule->empty()) {
        throw tools::UsageError("the path of the schedule file is empty");
    }
    ExitStatus status = nothingFound;
    std::vector<check::Result> results;
    for (const std::string& file : given.words) {
        check::Result result = check::checkFile(file, schedule);
        if (!result.unreadable.empty()) {
            std::cerr << "zephan-config-check: " << check::visible(file + ": " + result.unreadable) << "\n";
            status = failed;
        } else if (!result.findings.all().empty()) {
            status = std::max(status, somethingFound);
        }
        if (given.has('j')) {
            results.push_back(std::move(result));
        } else if (result.unreadable.empty()) {
            check::printText(std::cout, result, given.has('q'));
        }
    }
    if (given.has('j')) {
        check::printJson(std::cout, results, given.has('q'));
    }
    return status;
}

}  // namespace

int main(int count, char** words) {
    return tools::runProgram({.name = "zephan-config-check",
                              .version = CHECK_VERSION,
                              .help = kHelp,
                              .failed = failed,
                              .options = {{"quiet", 'q', ""}, {"json", 'j', ""}, {"schedule", 's'}}},
                             count, words, run);
}
