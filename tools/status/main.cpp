// zephan-status: what an agent that does not run left behind, and what a start would do.
#include "TimeWords.h"
#include "common/Program.h"
#include "common/ShownText.h"
#include "platform/Clock.h"
#include "status/Metrics.h"
#include "status/Moment.h"
#include "status/StateFiles.h"
#include "status/StatusJson.h"

#include <chrono>
#include <filesystem>
#include <iostream>
#include <optional>
#include <string>
#include <system_error>
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

enum ExitStatus : int { notOn = 0, faulty = 1, waits = 3, resumes = 4 };

constexpr std::chrono::milliseconds kLookInterval(200);

enum Option : int { configuration = tools::kLong, schedule, moment, json, metrics, watch };

/// Throws UsageError for what does not go together.
void check(const tools::CommandLine& given) {
    if (!given.words.empty()) {
        throw UsageError("unexpected argument " + given.words.front());
    }
    if (given.value(configuration).value_or("").empty() && given.value(schedule).value_or("").empty()) {
        throw UsageError("no file to tell the status from (--config FILE, --schedule FILE)");
    }
    if (given.has(metrics) && (given.has(json) || given.has(watch))) {
        throw UsageError("--metrics is a form of its own, and printed once");
    }
    if (given.has(watch) && given.has(moment)) {
        throw UsageError("--watch is about the present, so there is no --clock");
    }
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

/// Perhaps because the path is relative to the agent's directory, and this is another one.
bool isAstray(const status::FoundFile& file) {
    return file.state == status::FoundFile::State::missing && std::filesystem::path(file.path).is_relative();
}

/// A line in which a terminal finds nothing to act upon, whatever a path holds.
std::string line(const std::string& label, const std::string& text) {
    std::string shown = label;
    logreader::appendShown(shown, text, "  ");
    return shown + "\n";
}

std::string jsonOf(const status::StateFiles& files, std::int64_t now) {
    nlohmann::ordered_json json = {{"sentence", files.startText(now)}, {"now", status::momentJson(now)}};
    json.update(status::stateFilesJson(files, now));
    json["configuration"] = status::foundJson(files.configuration);
    return status::dumped(json);
}

int run(const tools::CommandLine& given) {
    const auto asked =
        given.has(moment)
            ? std::optional(logreader::readMoment(*given.value(moment)).time_since_epoch().count())
            : std::nullopt;
    check(given);
    for (std::string told;; std::this_thread::sleep_for(kLookInterval)) {
        const std::int64_t now = asked.value_or(platform::now());
        const status::StateFiles files = status::readConfiguredFiles(given.value(configuration).value_or(""),
                                                                     given.value(schedule).value_or(""), now);
        if (given.has(metrics)) {
            std::cout << status::metricsText(status::fileMetrics(files, now));
            return notOn;
        }
        // Both change with the files, or with a minute that is over.
        const std::string sentence = line("", files.startText(now));
        std::string details =
            files.isConfigured() ? "" : line("  configuration  ", files.configuration.problem());
        details += line("  last known     ", files.resumeText());
        details += line("  next schedule  ", files.scheduleText(now));
        std::error_code error;  // of a directory that is gone
        const std::string here = std::filesystem::current_path(error).string();
        if (!error && (isAstray(files.configuration) || isAstray(files.resume) || isAstray(files.schedule))) {
            details += line("  looked for in  ", here);
        }
        if (sentence + details != told) {
            if (given.has(json)) {
                std::cout << jsonOf(files, now);
            } else {
                std::cout << sentence << line("  now            ", status::momentText(now)) << details;
            }
            std::cout << std::flush;
            told = sentence + details;
        }
        if (!given.has(watch) || !std::cout) {
            return exitStatus(files, now);
        }
    }
}

}  // namespace

int main(int count, char** words) {
    return tools::runProgram({.name = "zephan-status",
                              .version = TOOL_VERSION,
                              .help = kHelp,
                              .options = {{"config", configuration},
                                          {"schedule", schedule},
                                          {"clock", moment},
                                          {"json", json, ""},
                                          {"metrics", metrics, ""},
                                          {"watch", watch, ""}}},
                             count, words, run);
}
