#include "status/Metrics.h"

#include "logging/LogFamily.h"
#include "platform/Directory.h"
#include "records/GmtClock.h"
#include "status/StatusJson.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace status {

namespace {

struct Sample {
    std::string label;  ///< as in mode="NOT_ACTIVE"; may be empty
    std::int64_t value = 0;
};

std::vector<Sample> known(std::optional<std::int64_t> value) {
    return value ? std::vector<Sample>{{"", *value}} : std::vector<Sample>{};
}

std::vector<Sample> modes(std::int32_t mode) {
    std::vector<Sample> samples;
    for (const std::int32_t each : {rsm::kNotActive, rsm::kForcePollGrace, rsm::kForcePollActivity}) {
        samples.push_back({std::string("mode=\"") + rsm::nameOf(each) + "\"", each == mode ? 1 : 0});
    }
    return samples;
}

std::vector<Sample> statesOf(const StateFiles& files) {
    std::vector<Sample> samples;
    const auto add = [&](const char* name, const FoundFile& file) {
        for (std::size_t state = 0; state < kFileStates.size(); ++state) {
            samples.push_back({std::string("file=\"") + name + "\",state=\"" + kFileStates.at(state) + "\"",
                               state == static_cast<std::size_t>(file.state) ? 1 : 0});
        }
    };
    add("configuration", files.configuration);
    add("resume", files.resume);
    add("schedule", files.schedule);
    return samples;
}

}  // namespace

std::optional<LogMeasure> measureLog(const std::string& path) {
    const std::size_t separator = platform::lastSeparator(path);
    const std::string own = separator == std::string::npos ? path : path.substr(separator + 1);
    const LogFamily family(separator == std::string::npos ? "./" + path : path);
    platform::Directory directory;
    std::vector<std::string> names;
    if (directory.open(family.openedDirectory()) != 0 || directory.list(names) != 0) {
        return std::nullopt;
    }
    LogMeasure log;
    for (const std::string& name : names) {
        const platform::Look look = family.holds(name) ? directory.look(name) : platform::Look{};
        if (look.kind != platform::Look::Kind::Regular) {
            continue;
        }
        const bool isLog = name == own;
        (isLog ? log.bytes : log.archiveBytes) += look.size;
        log.archives += isLog ? 0 : 1;
        if (look.size > 0) {
            log.lastEntry = std::max(log.lastEntry, directory.modifiedAt(name));
        }
    }
    return log;
}

Metrics fileMetrics(const StateFiles& files, std::int64_t now) {
    const StateFiles::Resume& resume = files.resume;
    Metrics metrics;
    metrics.isResumePending = files.start(now) == StateFiles::Start::resumes;
    if (resume.isRecord()) {
        metrics.began = resume.began;
    }
    if (resume.isOpen) {
        metrics.mode = rsm::kForcePollGrace;
        metrics.ends = resume.began + resume.minutes * records::kSecondsPerMinute;
    }
    if (files.schedule.isRecord()) {
        metrics.scheduleStart = files.schedule.start;
    }
    metrics.files = files;
    if (!files.logPath.empty()) {
        metrics.log = measureLog(files.logPath);
    }
    return metrics;
}

std::string metricsText(const Metrics& metrics) {
    std::string text;
    const auto add = [&text](const std::string& name, const char* type, const char* help,
                             const std::vector<Sample>& samples) {
        if (samples.empty()) {
            return;
        }
        text += "# HELP " + name + " " + help + "\n# TYPE " + name + " " + type + "\n";
        for (const auto& [label, value] : samples) {
            text += name;
            text += label.empty() ? " " : "{" + label + "} ";
            text += std::to_string(value) + "\n";
        }
    };
    add("zephan_build_info", "gauge", "What wrote this.", {{"version=\"" TOOL_VERSION "\"", 1}});
    add("zephan_rsm_mode", "gauge", "1 for the mode of RSM.", modes(metrics.mode));
    add("zephan_rsm_began_timestamp_seconds", "gauge", "When RSM, or its last grace period, began.",
        known(metrics.began));
    add("zephan_rsm_ends_timestamp_seconds", "gauge", "When RSM ends if nothing else happens.",
        known(metrics.ends));
    add("zephan_rsm_schedule_start_timestamp_seconds", "gauge", "Start of the schedule ordered last.",
        known(metrics.scheduleStart));
    add("zephan_rsm_resume_pending", "gauge", "1 when a start of the agent would resume RSM.",
        known(metrics.isResumePending ? 1 : 0));
    add("zephan_rsm_polls_total", "counter", "Forced polls since the session began.", known(metrics.polls));
    add("zephan_file_state", "gauge", "1 for the state of the file.", statesOf(metrics.files));
    if (const auto& log = metrics.log) {
        add("zephan_log_last_entry_timestamp_seconds", "gauge", "When the last entry was written.",
            known(log->lastEntry));
        add("zephan_log_size_bytes", "gauge", "Size of the log file.", known(log->bytes));
        add("zephan_log_archives", "gauge", "Archives of the log.", known(log->archives));
        add("zephan_log_archives_size_bytes", "gauge", "Size of all archives.", known(log->archiveBytes));
    }
    return text;
}

}  // namespace status
