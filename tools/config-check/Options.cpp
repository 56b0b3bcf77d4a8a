#include "Options.h"

#include <getopt.h>

namespace check {

const char* const kHelp =
    R"(Usage: zephan-config-check [OPTION]... FILE...
Check configuration files of ZephanRSMLogger and show the settings in force.

Each FILE is read as the module reads it, and what is most likely a mistake is
printed as FILE:LINE:COLUMN: error: TEXT [KIND] or warning: TEXT [KIND], with
the line that it is in. Below stand the settings in force, each with the line
that it comes from or "default". Relative paths in FILE are taken from the
working directory: run the program where the agent runs, as its user.
Nothing is opened that FILE names, but the files that the module would write
are looked at.

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
  zephan-config-check zephan-config.xml
  zephan-config-check --quiet --schedule=state/schedule.xml zephan-config.xml
)";

Options parseOptions(int count, char** words) {
    enum Option : int { quiet = 'q', json = 'j', schedule = 's', help = 'h', version = 'V' };
    const option known[] = {{"quiet", no_argument, nullptr, quiet},
                            {"json", no_argument, nullptr, json},
                            {"schedule", required_argument, nullptr, schedule},
                            {"help", no_argument, nullptr, help},
                            {"version", no_argument, nullptr, version},
                            {nullptr, 0, nullptr, 0}};
    Options options;
    for (int found = 0; (found = ::getopt_long(count, words, ":qjs:hV", known, nullptr)) != -1;) {
        switch (found) {
            case quiet:
                options.quiet = true;
                break;
            case json:
                options.json = true;
                break;
            case schedule:
                options.schedule = ::optarg;
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
    options.files.assign(words + ::optind, words + count);
    if (options.files.empty()) {
        throw UsageError("no FILE to check");
    }
    if (options.schedule && options.schedule->empty()) {
        throw UsageError("the path of the schedule file is empty");
    }
    return options;
}

}  // namespace check
