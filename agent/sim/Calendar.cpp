#include "sim/Calendar.h"

#include <chrono>

namespace sim {

namespace {

constexpr int kTmYearOrigin = 1900;

}  // namespace

std::optional<std::tm> utcFields(std::int64_t moment) {
    using namespace std::chrono;
    const sys_seconds instant{seconds(moment)};
    const auto day = floor<days>(instant);
    const year_month_day date{day};
    if (!date.ok() || sys_days(date) != day) {
        return std::nullopt;
    }
    const hh_mm_ss time{instant - day};
    std::tm fields = {};
    fields.tm_year = static_cast<int>(date.year()) - kTmYearOrigin;
    fields.tm_mon = static_cast<int>(static_cast<unsigned>(date.month())) - 1;
    fields.tm_mday = static_cast<int>(static_cast<unsigned>(date.day()));
    fields.tm_hour = static_cast<int>(time.hours().count());
    fields.tm_min = static_cast<int>(time.minutes().count());
    fields.tm_sec = static_cast<int>(time.seconds().count());
    fields.tm_wday = static_cast<int>(weekday(day).c_encoding());
    fields.tm_yday = static_cast<int>((day - sys_days(date.year() / January / 1)).count());
    return fields;
}

std::optional<std::int64_t> momentOf(int year, int month, int day, int hour, int minute, int second) {
    using namespace std::chrono;
    const year_month_day date{std::chrono::year(year), std::chrono::month(static_cast<unsigned>(month)),
                              std::chrono::day(static_cast<unsigned>(day))};
    const bool isTime = hour >= 0 && hour < 24 && minute >= 0 && minute < 60 && second >= 0 && second < 60;
    if (!date.ok() || !isTime) {
        return std::nullopt;
    }
    const auto instant = sys_days(date) + hours(hour) + minutes(minute) + seconds(second);
    return seconds(instant.time_since_epoch()).count();
}

}  // namespace sim
