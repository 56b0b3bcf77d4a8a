// zephan-session: the page of a session.
#include "ConfiguredPath.h"
#include "TimeWords.h"
#include "common/Program.h"
#include "session/EventFormats.h"
#include "session/LogSession.h"
#include "session/PageFile.h"
#include "session/Redaction.h"
#include "session/SessionPage.h"
#include "session/SessionRecord.h"

#include <cerrno>
#include <chrono>
#include <cstring>
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

enum Option : int { csv = tools::kLong, perfetto, redact, configuration, moment };

/// Throws UsageError for what does not go together.
void check(const tools::CommandLine& given) {
    const bool isPage = !given.has(csv) && !given.has(perfetto);
    if (given.has(csv) && given.has(perfetto)) {
        throw UsageError("--csv and --perfetto are two");
    }
    if (given.words.empty() && !given.has(configuration)) {
        throw UsageError("no FILE to draw");
    }
    if (given.words.size() > (given.has(csv) ? 1 : 2)) {
        throw UsageError("more files than are shown at once: " + given.words.back());
    }
    if (isPage && !given.has('o')) {
        throw UsageError("no file for the page (-o FILE); --csv and --perfetto need none");
    }
}

/// Adds all lines of a kept trace. A last line without its end, as a killed program leaves it, is left out.
void readTrace(const std::string& file, session::SessionRecord& record) {
    std::ifstream trace(file, std::ios::binary);
    if (!trace) {
        throw std::runtime_error(file + ": " + std::strerror(errno));
    }
    std::string line;
    for (int number = 1; std::getline(trace, line); ++number) {
        try {
            if (!line.empty()) {
                record.addLine(line);
            }
        } catch (const std::runtime_error& error) {
            if (!trace.eof()) {
                throw std::runtime_error(file + ":" + std::to_string(number) + ": " + error.what());
            }
            std::cerr << file << ": the last line is cut off and left out\n";
        }
    }
    if (trace.bad()) {
        throw std::runtime_error(file + ": cannot be read");
    }
}

std::unique_ptr<session::SessionRecord> readSession(const std::string& file, const std::string& title,
                                                    std::optional<std::chrono::seconds> start,
                                                    const tools::CommandLine& given) {
    auto record = std::make_unique<session::SessionRecord>(title);
    if (given.has(configuration)) {
        record->useConfiguration(*given.value(configuration));
    }
    if (start) {
        record->setClock(*start);
    }
    if (session::isLog(file)) {
        session::readLog(file, *record);
    } else {
        readTrace(file, *record);
    }
    if (given.has(redact)) {
        session::leaveNamesOut(*record);
    }
    return record;
}

int run(const tools::CommandLine& given) {
    check(given);
    std::optional<std::chrono::seconds> start;
    if (given.has(moment)) {
        start = logreader::readMoment(*given.value(moment)).time_since_epoch();
    }
    std::optional<session::PageFile> output;
    if (given.has('o')) {
        output.emplace(*given.value('o'));
    }
    std::vector<std::string> files = given.words;
    if (files.empty()) {
        files.push_back(logreader::configuredPath(*given.value(configuration)));
    }
    std::vector<std::unique_ptr<session::SessionRecord>> records;
    std::vector<const session::SessionRecord*> sessions;
    for (const std::string& file : files) {
        const std::string title = files.size() > 1 ? file : std::filesystem::path(file).filename().string();
        sessions.push_back(records.emplace_back(readSession(file, title, start, given)).get());
    }
    const auto write = [&](std::ostream& target) {
        if (given.has(csv)) {
            session::writeCsv(*sessions.front(), target);
        } else if (given.has(perfetto)) {
            session::writeTraceEvents(sessions, target);
        } else {
            target << session::sessionPage(*sessions.front(), false,
                                           sessions.size() > 1 ? sessions.back() : nullptr);
        }
    };
    if (output) {
        output->write(write);
    } else {
        write(std::cout);
    }
    return 0;
}

}  // namespace

int main(int count, char** words) {
    return tools::runProgram({.name = "zephan-session",
                              .version = TOOL_VERSION,
                              .help = kHelp,
                              .signs = false,
                              .options = {{"output", 'o'},
                                          {"csv", csv, ""},
                                          {"perfetto", perfetto, ""},
                                          {"redact", redact, ""},
                                          {"config", configuration},
                                          {"clock", moment}}},
                             count, words, run);
}
