#include "Options.h"

#include <charconv>

namespace logreader {

namespace {

enum Option : int { exclude = tools::kLong, zone, logZone, config, cursorFile, noPager, files, diskUsage };

std::size_t readCount(const std::string& text) {
    std::size_t count = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, count);
    if (error != std::errc() || stop != end) {
        throw UsageError("not a number of entries: " + text);
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

std::vector<tools::OptionRow> optionRows() {
    return {{"since", 'S'},
            {"until", 'U'},
            {"grep", 'g'},
            {"exclude", exclude},
            {"ignore-case", 'i', ""},
            {"context", 'C'},
            {"last", 'n'},
            {"lines", 'n'},
            {"cursor-file", cursorFile},
            {"follow", 'f', ""},
            {"reverse", 'r', ""},
            {"output", 'o'},
            {"json", 'o', "json"},
            {"utc", zone, "UTC"},
            {"zone", zone},
            {"log-zone", logZone},
            {"no-pager", noPager, ""},
            {"priority", 'p'},
            {"quiet", 'q', ""},
            {"files", files, ""},
            {"disk-usage", diskUsage, ""},
            {"config", config}};
}

Options readOptions(const tools::CommandLine& given) {
    if (given.has('p')) {
        throw UsageError("entries carry no levels, so there is no -p; --grep chooses by the message");
    }
    Options options;
    options.mode = given.has(diskUsage) ? Options::Mode::diskUsage
                   : given.has(files)   ? Options::Mode::files
                                        : Options::Mode::read;
    options.since = given.value('S');
    options.until = given.value('U');
    options.grep = given.value('g');
    options.exclude = given.value(exclude);
    options.ignoreCase = given.has('i');
    options.follow = given.has('f');
    options.reverse = given.has('r');
    options.context = given.has('C') ? readCount(*given.value('C')) : 0;
    if (given.has('n')) {
        options.last = readCount(*given.value('n'));
    }
    options.cursorFile = given.value(cursorFile);
    options.form = readForm(given.value('o').value_or("short"));
    options.pager = !given.has(noPager);
    options.quiet = given.has('q');
    options.zone = given.value(zone);
    options.logZone = given.value(logZone);
    options.config = given.value(config);
    options.files = given.words;
    check(options);
    return options;
}

}  // namespace logreader
