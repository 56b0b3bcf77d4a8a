// zephan-status: what an agent that does not run left behind, and what a start would do.
#include "TimeWords.h"
#include "common/CommandLine.h"
#include "platform/Clock.h"
#include "status/FileStatus.h"
#include "status/Metrics.h"
#include "status/StateFiles.h"

#include <chrono>
#include <exception>
#include <iostream>
#include <optional>
#include <string>
#include <thread>

namespace {

using tools::UsageError;

constexpr char kHelp[] = R"(Usage: zephan-status [--config FILE] [--schedule FILE] [OPTION]...
Tell what an agent that does not run left behind, and what its next start
would do with it.

The files are read as the module reads them, and none is changed. Relative
paths are taken from the working directory: run the program where the agent
runs, as its user. Each file alone can be asked about.

      --config FILE    the configuration, which names the resume state file
      --schedule FILE  the schedule file that the agent gives to the
                       data-source start-up
      --clock TIME     the moment that is asked about (default: now), as in
                       2026-03-01T10:00:00Z, "tomorrow 06:00"
      --json           print a JSON object
      --metrics        print Prometheus' text format, for node_exporter's textfile
                       collector; the exit status is 0 once it is printed
      --watch          go on, and print anew when something has changed
  -h, --help           print this text and end
  -V, --version        print the version and end

Exit status:
  0  a start would not bring RSM on
  1  a file could not be read or is damaged; the output names it
  2  wrong usage
  3  a start would wait for a schedule
  4  a start would resume RSM, or go on with a schedule

Examples:
  $ zephan-status --config zephan-config.xml --schedule state/schedule.xml
  $ zephan-status --config zephan-config.xml --json | jq -r .sentence
)";

enum ExitStatus : int { notOn = 0, faulty = 1, wrongUsage = 2, waits = 3, resumes = 4 };

constexpr std::chrono::milliseconds kLookInterval(200);

struct Options {
    std::string configuration;
    std::string schedule;
    std::optional<std::int64_t> clock;
    bool json = false;
    bool metrics = false;
    bool watch = false;
};

/// Nothing when the command line asks for a text, which is printed.
std::optional<Options> parseOptions(int count, char** words) {
    enum Option : int { config = tools::kLong, schedule, clock, json, metrics, watch };
    const tools::CommandLine given(count, words,
                                   {{"config", config},
                                    {"schedule", schedule},
                                    {"clock", clock},
                                    {"json", json, ""},
                                    {"metrics", metrics, ""},
                                    {"watch", watch, ""}});
    if (given.has('h') || given.has('V')) {
        std::cout << (given.has('h') ? kHelp : "zephan-status " TOOL_VERSION "\n");
        return std::nullopt;
    }
    Options options{given.value(config).value_or(""),
                    given.value(schedule).value_or(""),
                    std::nullopt,
                    given.has(json),
                    given.has(metrics),
                    given.has(watch)};
    if (given.has(clock)) {
        options.clock = logreader::readMoment(*given.value(clock)).time_since_epoch().count();
    }
    if (!given.words.empty()) {
        throw UsageError("unexpected argument " + given.words.front());
    }
    if (options.configuration.empty() && options.schedule.empty()) {
        throw UsageError("no file to tell the status from (--config FILE, --schedule FILE)");
    }
    if (options.metrics && (options.json || options.watch)) {
        throw UsageError("--metrics is a form of its own, and printed once");
    }
    if (options.watch && options.clock) {
        throw UsageError("--watch is about the present, so there is no --clock");
    }
    return options;
}

ExitStatus exitStatus(const status::StateFiles& files, std::int64_t now) {
    if (!files.isConfigured() || files.resume.isFaulty() || files.schedule.isFaulty()) {
        return faulty;
    }
    switch (files.start(now)) {
        case status::StateFiles::Start::waits:
            return waits;
        case status::StateFiles::Start::resumes:
        case status::StateFiles::Start::joinsSchedule:
            return resumes;
        case status::StateFiles::Start::unknown:
            return faulty;
        case status::StateFiles::Start::nothing:
            break;
    }
    return notOn;
}

ExitStatus run(const Options& options) {
    for (std::string told;; std::this_thread::sleep_for(kLookInterval)) {
        const std::int64_t now = options.clock.value_or(platform::now());
        const status::StateFiles files =
            status::readConfiguredFiles(options.configuration, options.schedule, now);
        if (options.metrics) {
            std::cout << status::metricsText(status::fileMetrics(files, now));
            return notOn;
        }
        const std::string details = files.startText(now) + status::detailsText(files, now);
        if (details != told) {
            std::cout << (options.json ? status::fileStatusJson(files, now)
                                       : status::fileStatusText(files, now))
                      << std::flush;
            told = details;
        }
        if (!options.watch || !std::cout) {
            return exitStatus(files, now);
        }
    }
}

}  // namespace

int main(int count, char** words) {
    ExitStatus status = faulty;
    try {
        const std::optional<Options> options = parseOptions(count, words);
        status = options ? run(*options) : notOn;
    } catch (const UsageError& error) {
        std::cerr << "zephan-status: " << error.what() << "\nTry zephan-status --help.\n";
        return wrongUsage;
    } catch (const std::exception& error) {
        std::cerr << "zephan-status: " << error.what() << "\n";
    }
    if (!std::cout.flush()) {
        std::cerr << "zephan-status: the output could not be written\n";
        return faulty;
    }
    return status;
}
