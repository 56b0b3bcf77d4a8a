// Points in time as texts.
#pragma once

#include <cstdint>
#include <string>

namespace status {

/// "2026-03-01 10:00:00 GMT"; `moment` in seconds since 1970.
std::string gmtText(std::int64_t moment);
/// "2026-03-01 11:00:00 CET", in the time zone of the process.
std::string localText(std::int64_t moment);
/// Both: "2026-03-01 10:00:00 GMT (2026-03-01 11:00:00 CET)", once when they are the same.
std::string momentText(std::int64_t moment);

}  // namespace status
