// zephan-config-check: the faults of a configuration, and the settings in force.
#include "Rules.h"
#include "common/CommandLine.h"

#include <algorithm>
#include <exception>
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

struct Options {
    bool quiet = false;
    bool json = false;
    std::optional<std::string> schedule;
    std::vector<std::string> files;
};

void complain(const std::string& text) {
    std::cerr << "zephan-config-check: " << check::visible(text) << "\n";
}

/// Nothing when the command line asks for a text, which is printed. Throws UsageError when it means nothing.
std::optional<Options> parseOptions(int count, char** words) {
    const tools::CommandLine given(count, words, {{"quiet", 'q', ""}, {"json", 'j', ""}, {"schedule", 's'}});
    if (given.has('h') || given.has('V')) {
        std::cout << (given.has('h') ? kHelp : "zephan-config-check " CHECK_VERSION "\n");
        return std::nullopt;
    }
    Options options{given.has('q'), given.has('j'), given.value('s'), given.words};
    if (options.files.empty()) {
        throw tools::UsageError("no FILE to check");
    }
    if (options.schedule && options.schedule->empty()) {
        throw tools::UsageError("the path of the schedule file is empty");
    }
    return options;
}

ExitStatus run(const Options& options) {
    ExitStatus status = nothingFound;
    std::vector<check::Result> results;
    for (const std::string& file : options.files) {
        check::Result result = check::checkFile(file, options.schedule);
        if (!result.unreadable.empty()) {
            complain(file + ": " + result.unreadable);
            status = failed;
        } else if (!result.findings.all().empty()) {
            status = std::max(status, somethingFound);
        }
        if (options.json) {
            results.push_back(std::move(result));
        } else if (result.unreadable.empty()) {
            check::printText(std::cout, result, options.quiet);
        }
    }
    if (options.json) {
        check::printJson(std::cout, results, options.quiet);
    }
    return status;
}

}  // namespace

int main(int count, char** words) {
    ExitStatus status = failed;
    try {
        const std::optional<Options> options = parseOptions(count, words);
        status = options ? run(*options) : nothingFound;
    } catch (const tools::UsageError& error) {
        complain(error.what());
        std::cerr << "Try zephan-config-check --help.\n";
    } catch (const std::exception& error) {
        complain(error.what());
    }
    if (!std::cout.flush()) {
        complain("the output could not be written");
        return failed;
    }
    return status;
}
