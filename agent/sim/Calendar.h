// Dates of the common calendar, on any system alike.
#pragma once

#include <cstdint>
#include <ctime>
#include <optional>

namespace sim {

/// Fields in UTC of a moment since 1970; none beyond the calendar.
std::optional<std::tm> utcFields(std::int64_t moment);
/// The moment of a date and a time in UTC; none when there is no such date or time.
std::optional<std::int64_t> momentOf(int year, int month, int day, int hour, int minute, int second);

}  // namespace sim
