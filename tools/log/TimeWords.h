#pragma once

#include "TimeZone.h"

#include <chrono>
#include <optional>
#include <string>

namespace logreader {

/// The span of time that --since and --until name, both ends included.
struct Span {
    std::optional<std::chrono::sys_seconds> since;
    std::optional<std::chrono::sys_seconds> until;
};

/// Reads both texts; clock times are those of `zone`. Throws UsageError.
Span readSpan(const std::optional<std::string>& since, const std::optional<std::string>& until,
              std::chrono::sys_seconds now, const TimeZone& zone);
/// The moment that a text names for --since, in the zone of this process. Throws UsageError.
std::chrono::sys_seconds readMoment(const std::string& text);

}  // namespace logreader
