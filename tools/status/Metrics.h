// The status in Prometheus' text format, which node_exporter's textfile collector takes as well.
#pragma once

#include "controller/RsmState.h"
#include "status/StateFiles.h"

#include <cstdint>
#include <optional>
#include <string>

namespace status {

/// What the log takes up; its archives are the files that the module's clean-up takes for its own.
struct LogMeasure {
    std::optional<std::int64_t> lastEntry;  ///< when it was written, in seconds since 1970
    std::int64_t bytes = 0;
    std::int64_t archives = 0;
    std::int64_t archiveBytes = 0;
};

/// Nothing when its directory cannot be listed. The path as the configuration spells it.
std::optional<LogMeasure> measureLog(const std::string& path);

/// All times in seconds since 1970; what is not known is left out.
struct Metrics {
    std::int32_t mode = rsm::kNotActive;
    std::optional<std::int64_t> began;
    std::optional<std::int64_t> ends;
    std::optional<std::int64_t> scheduleStart;
    std::optional<std::int64_t> polls;
    bool isResumePending = false;
    StateFiles files;
    std::optional<LogMeasure> log;
};

/// Of an agent that the files alone tell of.
Metrics fileMetrics(const StateFiles& files, std::int64_t now);
std::string metricsText(const Metrics& metrics);

}  // namespace status
