// zephan-session: the page of a session.
#include "ConfiguredPath.h"
#include "TimeWords.h"
#include "common/CommandLine.h"
#include "session/EventFormats.h"
#include "session/LogSession.h"
#include "session/PageFile.h"
#include "session/Redaction.h"
#include "session/SessionPage.h"
#include "session/SessionRecord.h"
#include "session/TraceReader.h"

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using tools::UsageError;

constexpr char kHelp[] = R"(Usage: zephan-session [FILE...] -o PAGE.html [OPTION]...
  or:  zephan-session [FILE...] (--csv | --perfetto) [OPTION]...
Draw what RSM did: one HTML page with modes, polls, reports and remote activity
over time, and every event below. It needs nothing but a browser.

FILE is the log file of a device, as log/kelp-logs.xml; its archives beside it
are found by their names, and what gzip has compressed is read, too. The page
says what a log does not tell. The times are of this machine's zone, or TZ.
Or FILE is a trace that was kept (krx-agent-sim replay --trace FILE). Without
FILE it is the log file that the configuration names.

  -o, --output FILE  the page; it takes the place of what is there in one step
      --csv          one row an event instead; to standard output without -o
      --perfetto     the JSON of trace viewers, as ui.perfetto.dev, instead
      --redact       leave out the names of members and operators, and with them
                     all of the agent's messages but the configuration's texts
      --config FILE  the configuration whose audit texts are to be used: for a
                     log, by which an entry that holds one is such a message;
                     for a trace, when the one that it names is not there
      --clock TIME   the wall clock at a trace's start, as in
                     2026-03-01T10:00:00Z (default: as the reports show it)
  -h, --help         print this text and end
  -V, --version      print the version and end

Exit status: 0 the page was written, 1 a file could not be read or written, 2
wrong usage.

Examples:
  $ zephan-session --config zephan-config.xml log/kelp-logs.xml -o night.html
  $ zephan-session trace.jsonl -o page.html
  $ zephan-session --csv log/kelp-logs.xml | grep force-poll
)";

enum ExitStatus : int { written = 0, failed = 1, wrongUsage = 2 };

struct Options {
    enum class Format : std::uint8_t { page, csv, traceEvents };

    std::vector<std::string> files;
    std::optional<std::string> output;
    Format format = Format::page;
    bool redact = false;
    std::optional<std::string> configuration;
    std::optional<std::chrono::seconds> clock;
};

/// Nothing when the command line asks for a text, which is printed.
std::optional<Options> parseOptions(int count, char** words) {
    enum Option : int { csv = tools::kLong, perfetto, redact, config, clock };
    const tools::CommandLine given(count, words,
                                   {{"output", 'o'},
                                    {"csv", csv, ""},
                                    {"perfetto", perfetto, ""},
                                    {"redact", redact, ""},
                                    {"config", config},
                                    {"clock", clock}});
    if (given.has('h') || given.has('V')) {
        std::cout << (given.has('h') ? kHelp : "zephan-session " TOOL_VERSION "\n");
        return std::nullopt;
    }
    Options options;
    options.files = given.words;
    options.output = given.value('o');
    options.format = given.has(csv)        ? Options::Format::csv
                     : given.has(perfetto) ? Options::Format::traceEvents
                                           : Options::Format::page;
    options.redact = given.has(redact);
    options.configuration = given.value(config);
    if (given.has(clock)) {
        options.clock = logreader::readMoment(*given.value(clock)).time_since_epoch();
    }
    if (given.has(csv) && given.has(perfetto)) {
        throw UsageError("--csv and --perfetto are two");
    }
    if (options.files.empty() && !options.configuration) {
        throw UsageError("no FILE to draw");
    }
    if (options.files.size() > (options.format == Options::Format::csv ? 1 : 2)) {
        throw UsageError("more files than are shown at once: " + options.files.back());
    }
    if (!options.output && options.format == Options::Format::page) {
        throw UsageError("no file for the page (-o FILE)");
    }
    return options;
}

std::unique_ptr<session::SessionRecord> readSession(const std::string& file, const Options& options) {
    const std::string name = std::filesystem::path(file).filename().string();
    auto record = std::make_unique<session::SessionRecord>(options.files.size() > 1 ? file : name);
    if (options.configuration) {
        record->useConfiguration(*options.configuration);
    }
    if (options.clock) {
        record->setClock(*options.clock);
    }
    if (session::isLog(file)) {
        session::readLog(file, *record);
    } else {
        std::ifstream trace(file, std::ios::binary);
        if (!trace) {
            throw std::runtime_error(file + ": " + std::strerror(errno));
        }
        if (!session::readTrace(trace, file, *record)) {
            std::cerr << file << ": the last line is cut off and left out\n";
        }
    }
    if (options.redact) {
        session::leaveNamesOut(*record);
    }
    return record;
}

void run(Options options) {
    std::optional<session::PageFile> output;
    if (options.output) {
        output.emplace(*options.output);
    }
    if (options.files.empty()) {
        options.files.push_back(logreader::configuredPath(*options.configuration));
    }
    std::vector<std::unique_ptr<session::SessionRecord>> records;
    std::vector<const session::SessionRecord*> sessions;
    for (const std::string& file : options.files) {
        sessions.push_back(records.emplace_back(readSession(file, options)).get());
    }
    const auto write = [&](std::ostream& target) {
        switch (options.format) {
            case Options::Format::csv:
                session::writeCsv(*sessions.front(), target);
                break;
            case Options::Format::traceEvents:
                session::writeTraceEvents(sessions, target);
                break;
            case Options::Format::page:
                target << session::sessionPage(*sessions.front(), false,
                                               sessions.size() > 1 ? sessions.back() : nullptr);
        }
    };
    if (output) {
        output->write(write);
    } else {
        write(std::cout);
    }
}

}  // namespace

int main(int count, char** words) {
    try {
        if (std::optional<Options> options = parseOptions(count, words)) {
            run(std::move(*options));
        }
        if (!std::cout.flush()) {
            throw std::runtime_error("zephan-session: the output could not be written");
        }
        return written;
    } catch (const UsageError& error) {
        std::cerr << "zephan-session: " << error.what() << "\nTry zephan-session --help.\n";
        return wrongUsage;
    } catch (const std::exception& error) {
        std::cerr << error.what() << "\n";
    }
    return failed;
}
