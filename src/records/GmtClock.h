// The scale of every RSM time, and its texts. A GMT clock value counts seconds so that the differences of two
// values and the texts made of them show GMT, whatever the local time zone and its daylight saving are; 0
// means no time.
#pragma once

#include <array>
#include <cstdint>

namespace records {

constexpr std::int64_t kSecondsPerMinute = 60;

/// The present as a GMT clock value.
std::int64_t gmtNow() noexcept;

/// The GMT clock value of a date "YYYY:MM:DD" and a time "HH:MM:SS" in GMT. Nothing is rejected: unreadable
/// fields count as 0 and fields out of range are carried over. A null text counts as empty.
std::int64_t stringToTime(const char* date, const char* time) noexcept;

/// Whether such a date or time may be meant: judged by its length and its numbers, which have no upper bound.
/// Any separators will do.
bool isValidDate(const char* date) noexcept;
bool isValidTime(const char* time) noexcept;

/// The GMT fields of a GMT clock value, months and years counted as in texts (September is 9, 2007 is 2007).
struct GmtFields {
    int year = 0;
    int month = 0;
    int day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
};
GmtFields gmtFields(std::int64_t gmtClockValue) noexcept;

/// The standard calendar line in GMT: "Sun Sep 30 05:06:00 2007\n".
std::array<char, 40> calendarText(std::int64_t gmtClockValue) noexcept;

}  // namespace records
