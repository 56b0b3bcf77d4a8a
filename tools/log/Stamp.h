#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string_view>

namespace logreader {

/// What stands in front of an entry, `Date:2026-3-1 Time:10:0:35 :: `.
struct Stamp {
    static constexpr std::size_t kLongest = sizeof "Date:2026-12-31 Time:23:59:59 :: " - 1;

    std::chrono::local_seconds clock;  ///< what the device's clock showed
    std::size_t length;                ///< of the stamp's own text
};

/// The stamp with which `text` begins, nothing when it begins otherwise. Only what the logger writes counts:
/// no leading zeros, a date of the calendar, a time of the day.
std::optional<Stamp> readStamp(std::string_view text);

}  // namespace logreader
