#include "platform/Clock.h"

#include <chrono>
#include <cstdint>
#include <time.h>

// The C library's own conversions know no moment before 1970 and none after 3000.
namespace platform {
namespace {

namespace calendar = std::chrono;

constexpr int kTmYearOrigin = 1900;
constexpr int kMonthsPerYear = 12;

}  // namespace

std::int64_t now() noexcept {
    return ::_time64(nullptr);
}

std::tm utcFields(std::int64_t moment) noexcept {
    const calendar::sys_seconds instant{calendar::seconds(moment)};
    const auto day = calendar::floor<calendar::days>(instant);
    // A year beyond the calendar's comes back as another one.
    const calendar::year_month_day date{day};
    if (!date.ok() || calendar::sys_days(date) != day) {
        return utcFields(0);
    }
    const calendar::hh_mm_ss time{instant - day};
    const calendar::sys_days newYear = date.year() / calendar::January / 1;
    std::tm fields{};
    fields.tm_year = static_cast<int>(date.year()) - kTmYearOrigin;
    fields.tm_mon = static_cast<int>(static_cast<unsigned>(date.month())) - 1;
    fields.tm_mday = static_cast<int>(static_cast<unsigned>(date.day()));
    fields.tm_hour = static_cast<int>(time.hours().count());
    fields.tm_min = static_cast<int>(time.minutes().count());
    fields.tm_sec = static_cast<int>(time.seconds().count());
    fields.tm_wday = static_cast<int>(calendar::weekday(day).c_encoding());
    fields.tm_yday = static_cast<int>((day - newYear).count());
    return fields;
}

std::tm localFields(std::int64_t moment) noexcept {
    std::tm fields{};
    const __time64_t value = moment;
    if (::_localtime64_s(&fields, &value) == 0) {
        return fields;
    }
    // The C library refuses such a moment before it has looked for the zone.
    ::_tzset();
    // Without summer time, for which those years have no rule. What does not fit wraps to a moment beyond the calendar.
    return utcFields(static_cast<std::int64_t>(static_cast<std::uint64_t>(moment) -
                                               static_cast<std::uint64_t>(_timezone)));
}

std::int64_t momentOfUtc(std::tm fields) noexcept {
    int year = fields.tm_year + kTmYearOrigin + fields.tm_mon / kMonthsPerYear;
    int month = fields.tm_mon % kMonthsPerYear;
    if (month < 0) {
        month += kMonthsPerYear;
        --year;
    }
    const calendar::sys_days firstOfMonth =
        calendar::year(year) / calendar::month(static_cast<unsigned>(month) + 1U) / 1;
    const auto instant = firstOfMonth + calendar::days(fields.tm_mday - 1) + calendar::hours(fields.tm_hour) +
                         calendar::minutes(fields.tm_min) + calendar::seconds(fields.tm_sec);
    return calendar::seconds(instant.time_since_epoch()).count();
}

}  // namespace platform
