#include "records/GmtClock.h"

#include "platform/Clock.h"
#include "platform/portable/Number.h"

#include <array>
#include <cstdio>
#include <string_view>

namespace records {
namespace {

constexpr int kTmYearOrigin = 1900;

std::string_view textOf(const char* text) noexcept {
    return text == nullptr ? std::string_view() : text;
}

}  // namespace

// Counting plain UTC seconds satisfies the scale, and no local daylight saving can ever enter into it.
std::int64_t gmtNow() noexcept {
    return platform::now();
}

std::int64_t stringToTime(const char* date, const char* time) noexcept {
    std::tm fields{};
    fields.tm_year = platform::readNumber(textOf(date), 0, 4) - kTmYearOrigin;
    fields.tm_mon = platform::readNumber(textOf(date), 5, 2) - 1;
    fields.tm_mday = platform::readNumber(textOf(date), 8, 2);
    fields.tm_hour = platform::readNumber(textOf(time), 0, 2);
    fields.tm_min = platform::readNumber(textOf(time), 3, 2);
    fields.tm_sec = platform::readNumber(textOf(time), 6, 2);
    return platform::momentOfUtc(fields);
}

bool isValidDate(const char* date) noexcept {
    const std::string_view text(date);
    return text.size() == sizeof("2026:12:31") - 1 && platform::readNumber(text, 0, 4) >= 1 &&
           platform::readNumber(text, 5, 2) >= 1 && platform::readNumber(text, 8, 2) >= 1;
}

bool isValidTime(const char* time) noexcept {
    const std::string_view text(time);
    return text.size() == sizeof("23:59:59") - 1 && platform::readNumber(text, 0, 2) >= 0 &&
           platform::readNumber(text, 3, 2) >= 0 && platform::readNumber(text, 6, 2) >= 0;
}

GmtFields gmtFields(std::int64_t gmtClockValue) noexcept {
    const std::tm at = platform::utcFields(gmtClockValue);
    return {at.tm_year + kTmYearOrigin, at.tm_mon + 1, at.tm_mday, at.tm_hour, at.tm_min, at.tm_sec};
}

std::array<char, 40> calendarText(std::int64_t gmtClockValue) noexcept {
    static constexpr std::array kDays{"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    static constexpr std::array kMonths{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                        "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    const std::tm fields = platform::utcFields(gmtClockValue);
    std::array<char, 40> text{};
    std::snprintf(text.data(), text.size(), "%s %s %2d %02d:%02d:%02d %d\n",
                  kDays[static_cast<std::size_t>(fields.tm_wday)],
                  kMonths[static_cast<std::size_t>(fields.tm_mon)], fields.tm_mday, fields.tm_hour,
                  fields.tm_min, fields.tm_sec, fields.tm_year + kTmYearOrigin);
    return text;
}

}  // namespace records
