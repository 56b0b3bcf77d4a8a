#include "Options.h"

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

}  // namespace

const char* const kHelp =
    R"(Usage: zephan-log [OPTION]... [FILE]...
Print a device's log with its archives, one entry a line, oldest first.

FILE is the log file, as log/kelp-logs.xml; its archives beside it are found by their names. An archive, or a
copy of one, can be named by itself. With no FILE and no --config, or when FILE is -, read standard input.

Which entries:
      --since T        not before T
      --until T        not after T; a day without a time of day is the whole day
  -g, --grep RE        whose message holds the regular expression (RE2)
      --exclude RE     whose message does not hold it
  -i, --ignore-case    for both expressions
  -n, --last N         only the last N of them
  -f, --follow         then wait for more, over rotations; begins with the last 10 entries of the log file
                       unless --since or --last says otherwise

How they are shown:
      --json           one JSON object a line: time, text, file, offset
      --utc            times in UTC
      --zone ZONE      times in this zone (default: the log's)
      --log-zone ZONE  zone of the clock that wrote the log (default: this machine's, or TZ)

Where the log is:
      --config FILE    a configuration file of the module; its log path is one more FILE, relative to the
                       current directory, which has to be the agent's

  -h, --help           print this text and end
  -V, --version        print the version and end

T is a date, a time of day, or both: 2026-03-01, 2026-03-01T10:00:05, "2026-03-01 10:00", 10:00, today,
yesterday, "yesterday 22:00"; with Z or +02:00 behind it when it is not meant in the zone of the output. Or it
is a time back from now: -90s, -30m, -2h, -1h30m, -3d, -1w; or now. A time of day alone is the last time that
the clock showed it; for --until, the first time after --since.
ZONE is a name (Europe/Berlin, UTC), a distance from UTC (+02:00), or what TZ takes.

Exit status: 0 entries were printed, 1 there was none to print, 2 wrong usage, or a file could not be read.

Examples:
  zephan-log --since "yesterday 18:00" --until 08:00 log/kelp-logs.xml
  zephan-log --since -2h --exclude 'Force Polling' --config zephan-config.xml
  zephan-log --follow -i --grep tunnel log/kelp-logs.xml
  zephan-log --json --log-zone +09:00 --utc copied/kelp-logs.xml | jq -r .text
)";

Options parseOptions(int count, char** words) {
    enum Option : int {
        since = 1000,
        until,
        exclude,
        json,
        utc,
        zone,
        logZone,
        config,
        follow = 'f',
        grep = 'g',
        help = 'h',
        ignoreCase = 'i',
        last = 'n',
        version = 'V'
    };
    const option known[] = {{"since", required_argument, nullptr, since},
                            {"until", required_argument, nullptr, until},
                            {"grep", required_argument, nullptr, grep},
                            {"exclude", required_argument, nullptr, exclude},
                            {"ignore-case", no_argument, nullptr, ignoreCase},
                            {"last", required_argument, nullptr, last},
                            {"follow", no_argument, nullptr, follow},
                            {"json", no_argument, nullptr, json},
                            {"utc", no_argument, nullptr, utc},
                            {"zone", required_argument, nullptr, zone},
                            {"log-zone", required_argument, nullptr, logZone},
                            {"config", required_argument, nullptr, config},
                            {"help", no_argument, nullptr, help},
                            {"version", no_argument, nullptr, version},
                            {nullptr, 0, nullptr, 0}};
    Options options;
    ::optind = 0;  // anew, also in a process that has read another command line
    for (int found = 0; (found = ::getopt_long(count, words, ":fg:hin:V", known, nullptr)) != -1;) {
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
            case last:
                options.last = readCount(::optarg);
                break;
            case follow:
                options.follow = true;
                break;
            case json:
                options.json = true;
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
                throw UsageError(std::string(found == ':' ? "no value for option " : "unknown option ") +
                                 words[::optind - 1]);
        }
    }
    options.files.assign(words + ::optind, words + count);
    if (options.follow && options.until) {
        throw UsageError("--follow has no end, so there is no --until");
    }
    return options;
}

}  // namespace logreader
