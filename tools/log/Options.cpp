#include "Options.h"

#include "common/WrongOption.h"

#include <charconv>
#include <cstring>

#include <getopt.h>

namespace logreader {

namespace {

std::size_t readCount(const char* text) {
    std::size_t count = 0;
    const char* const end = text + std::strlen(text);
    const auto [stop, error] = std::from_chars(text, end, count);
    if (error != std::errc() || stop != end) {
        throw UsageError(std::string("not a number of entries: ") + text);
    }
    return count;
}

Form readForm(const std::string& name) {
    if (name == "short") {
        return Form::shown;
    }
    if (name == "json") {
        return Form::json;
    }
    if (name == "cat") {
        return Form::cat;
    }
    throw UsageError("not a form of output: " + name + " (short, json or cat)");
}

void check(const Options& options) {
    if (options.follow && options.until) {
        throw UsageError("--follow has no end, so there is no --until");
    }
    if (options.follow && options.reverse) {
        throw UsageError("--follow has no end, so there is no --reverse");
    }
    if (options.cursorFile && options.reverse) {
        throw UsageError("--cursor-file goes on from one run to the next, so there is no --reverse");
    }
    const bool entries = options.mode == Options::Mode::read;
    if (!entries && (options.follow || options.cursorFile)) {
        throw UsageError(
            "--files and --disk-usage print no entries, so there is no --follow and no --cursor-file");
    }
}

}  // namespace

const char* const kHelp =
    R"(Usage: zephan-log [OPTION]... [FILE]...
Print a device's log with its archives, one entry a line, oldest first.

FILE is the log file, as log/kelp-logs.xml; its archives beside it are found by their names. An archive, or a
copy of one, can be named by itself. Files compressed by gzip are read, too. With no FILE and no --config, or
when FILE is -, read standard input.

Which entries:
  -S, --since T        not before T
  -U, --until T        not after T; a day without a time of day is the whole day
  -g, --grep RE        whose message holds the regular expression (RE2)
      --exclude RE     whose message does not hold it
  -i, --ignore-case    for both expressions
  -C, --context N      and N entries of the span before and after each
  -n, --last N         only the last N of them
      --lines N        the same
      --cursor-file F  only those after the last entry that the previous run with this file printed; each
                       run creates or updates the file
  -f, --follow         then wait for more, over rotations; begins with the last 10 entries of the log file
                       unless --since, --last or --cursor-file says otherwise

How they are shown:
  -r, --reverse        newest first
  -o, --output FORM    short (time and message, the default), json, or cat (the message alone)
      --json           one JSON object a line: time, text, file, offset, id
      --utc            times in UTC
      --zone ZONE      times in this zone (default: the log's)
      --log-zone ZONE  zone of the clock that wrote the log (default: this machine's, or TZ)
      --no-pager       straight to the terminal; otherwise what PAGER says, or less, shows page by page
  -q, --quiet          no notes on standard error, only what went wrong

Instead of entries:
      --files          each file with its first and last time, its entries and bytes
      --disk-usage     what all of them take up

Where the log is:
      --config FILE    a configuration file of the module; its log path is one more FILE, relative to the
                       current directory, which has to be the agent's

  -h, --help           print this text and end
  -V, --version        print the version and end

T is a date, a time of day, or both: 2026-03-01, 2026-03-01T10:00:05, "2026-03-01 10:00", 10:00, today,
yesterday, tomorrow, "yesterday 22:00"; followed by Z or +02:00 when it is not in the zone of the
output. Or it is a time back from now: -90s, -30m, -2h, -1h30m, -3d, -1w, "1 hour ago"; or now; or @ and the
seconds since 1970. Of a fraction of a second its whole second counts, since entries carry no more. A time of
day alone is the last time that the clock showed it; for --until, the first time after --since.
ZONE is a name (Europe/Berlin, UTC), a distance from UTC (+02:00), or what TZ takes.

Exit status: 0 entries were printed, 1 there were none to print, 2 wrong usage, or a file could not be read.

Examples:
  $ zephan-log --since "yesterday 18:00" --until 08:00 log/kelp-logs.xml
  $ zephan-log --since -2h --exclude 'Force Polling' --config zephan-config.xml
  $ zephan-log --follow -i --grep tunnel log/kelp-logs.xml
  $ zephan-log --follow --json --cursor-file shipped log/kelp-logs.xml | collector
  $ zephan-log --json --log-zone +09:00 --utc copied/kelp-logs.xml | jq -r .text
)";

Options parseOptions(int count, char** words) {
    enum Option : int {
        exclude = 1000,
        json,
        utc,
        zone,
        logZone,
        config,
        cursorFile,
        noPager,
        files,
        diskUsage,
        context = 'C',
        follow = 'f',
        grep = 'g',
        help = 'h',
        ignoreCase = 'i',
        last = 'n',
        output = 'o',
        priority = 'p',
        quiet = 'q',
        reverse = 'r',
        since = 'S',
        until = 'U',
        version = 'V'
    };
    const option known[] = {{"since", required_argument, nullptr, since},
                            {"until", required_argument, nullptr, until},
                            {"grep", required_argument, nullptr, grep},
                            {"exclude", required_argument, nullptr, exclude},
                            {"ignore-case", no_argument, nullptr, ignoreCase},
                            {"context", required_argument, nullptr, context},
                            {"last", required_argument, nullptr, last},
                            {"lines", required_argument, nullptr, last},
                            {"cursor-file", required_argument, nullptr, cursorFile},
                            {"follow", no_argument, nullptr, follow},
                            {"reverse", no_argument, nullptr, reverse},
                            {"output", required_argument, nullptr, output},
                            {"json", no_argument, nullptr, json},
                            {"utc", no_argument, nullptr, utc},
                            {"zone", required_argument, nullptr, zone},
                            {"log-zone", required_argument, nullptr, logZone},
                            {"no-pager", no_argument, nullptr, noPager},
                            {"quiet", no_argument, nullptr, quiet},
                            {"files", no_argument, nullptr, files},
                            {"disk-usage", no_argument, nullptr, diskUsage},
                            {"priority", optional_argument, nullptr, priority},
                            {"config", required_argument, nullptr, config},
                            {"help", no_argument, nullptr, help},
                            {"version", no_argument, nullptr, version},
                            {nullptr, 0, nullptr, 0}};
    Options options;
    ::optind = 0;  // anew, also in a process that has read another command line
    ::opterr = 0;
    for (int found = 0;
         (found = ::getopt_long(count, words, ":C:S:U:Vfg:hin:o:p::qr", known, nullptr)) != -1;) {
        switch (found) {
            case since:
                options.since = ::optarg;
                break;
            case until:
                options.until = ::optarg;
                break;
            case grep:
                options.grep = ::optarg;
                break;
            case exclude:
                options.exclude = ::optarg;
                break;
            case ignoreCase:
                options.ignoreCase = true;
                break;
            case context:
                options.context = readCount(::optarg);
                break;
            case last:
                options.last = readCount(::optarg);
                break;
            case cursorFile:
                options.cursorFile = ::optarg;
                break;
            case follow:
                options.follow = true;
                break;
            case reverse:
                options.reverse = true;
                break;
            case output:
                options.form = readForm(::optarg);
                break;
            case json:
                options.form = Form::json;
                break;
            case utc:
                options.zone = "UTC";
                break;
            case zone:
                options.zone = ::optarg;
                break;
            case logZone:
                options.logZone = ::optarg;
                break;
            case noPager:
                options.pager = false;
                break;
            case quiet:
                options.quiet = true;
                break;
            case files:
                options.mode = Options::Mode::files;
                break;
            case diskUsage:
                options.mode = Options::Mode::diskUsage;
                break;
            case priority:
                throw UsageError("entries carry no levels, so there is no -p; --grep chooses by the message");
            case config:
                options.config = ::optarg;
                break;
            case help:
                options.mode = Options::Mode::help;
                return options;
            case version:
                options.mode = Options::Mode::version;
                return options;
            default:
                throw UsageError(tools::wrongOption(found, known, words));
        }
    }
    options.files.assign(words + ::optind, words + count);
    check(options);
    return options;
}

}  // namespace logreader
