#include "TimeWords.h"

#include "Options.h"
#include "platform/Clock.h"

#include <re2/re2.h>
#include <string_view>

namespace logreader {

namespace {

using std::chrono::days;
using std::chrono::local_days;
using std::chrono::local_seconds;
using std::chrono::seconds;
using std::chrono::sys_seconds;

[[noreturn]] void fail(const std::string& text) {
    throw UsageError("not a time: " + text + " (try 2026-03-01T10:00, 10:00, yesterday, -2h, '1 hour ago')");
}

/// The length of "-1h30m" or "1 hour 30 minutes ago", nothing when the text has another form.
std::optional<seconds> readSpanBack(re2::StringPiece text) {
    static const RE2 part(R"( ?(\d{1,6}) ?(weeks?|w|days?|d|hours?|hr|h|minutes?|mins?|m|seconds?|secs?|s))");
    if (text.starts_with("-")) {
        text.remove_prefix(1);
    } else if (text.ends_with(" ago")) {
        text.remove_suffix(4);
    } else {
        return std::nullopt;
    }
    seconds length(0);
    do {
        int number = 0;
        std::string unit;
        if (!RE2::Consume(&text, part, &number, &unit)) {
            return std::nullopt;
        }
        constexpr std::string_view kUnits = "wdhms";
        constexpr seconds kLengths[] = {std::chrono::weeks(1), days(1), std::chrono::hours(1),
                                        std::chrono::minutes(1), seconds(1)};
        length += number * kLengths[kUnits.find(unit.front())];
    } while (!text.empty());
    return length;
}

/// "@1772355605", seconds since 1970, and perhaps a fraction.
std::optional<sys_seconds> readEpoch(const std::string& text) {
    std::int64_t moment = 0;
    return RE2::FullMatch(text, R"(@(\d{1,11})(?:\.\d+)?)", &moment)
               ? std::optional(sys_seconds(seconds(moment)))
               : std::nullopt;
}

/// A text like "2026-03-01T10:00:05+02:00" or "yesterday 22:00", taken apart.
struct ClockText {
    std::optional<local_days> day;
    std::optional<seconds> timeOfDay;
    std::optional<seconds> offset;
};

/// Digits; none are 0.
int number(const std::string& digits) {
    return digits.empty() ? 0 : std::stoi(digits);
}

ClockText readClockText(const std::string& text, local_days today) {
    static const RE2 form(
        R"((?:(today|yesterday|tomorrow)|(\d{4})-(\d\d?)-(\d\d?))?(?:(?:^|[T ])(\d\d?):(\d\d)(?::(\d\d)(?:[.,]\d+)?)?)? ?(?:(Z)|([+-])(\d\d):?(\d\d))?)");
    std::string dayName;
    std::string year;
    std::string month;
    std::string day;
    std::string hour;
    std::string minute;
    std::string second;
    std::string utc;
    std::string sign;
    std::string offsetHours;
    std::string offsetMinutes;
    if (!RE2::FullMatch(text, form, &dayName, &year, &month, &day, &hour, &minute, &second, &utc, &sign,
                        &offsetHours, &offsetMinutes) ||
        (dayName.empty() && year.empty() && hour.empty())) {
        fail(text);
    }
    ClockText read;
    if (!dayName.empty()) {
        read.day = today + days(dayName == "today" ? 0 : dayName == "tomorrow" ? 1 : -1);
    } else if (!year.empty()) {
        const auto date = std::chrono::year(number(year)) / number(month) / number(day);
        if (!date.ok()) {
            fail(text);
        }
        read.day = local_days(date);
    }
    if (!hour.empty()) {
        if (number(hour) > 23 || number(minute) > 59 || number(second) > 59) {
            fail(text);
        }
        read.timeOfDay =
            std::chrono::hours(number(hour)) + std::chrono::minutes(number(minute)) + seconds(number(second));
    }
    if (!utc.empty()) {
        read.offset = seconds(0);
    } else if (!sign.empty()) {
        const seconds offset =
            std::chrono::hours(number(offsetHours)) + std::chrono::minutes(number(offsetMinutes));
        read.offset = sign == "-" ? -offset : offset;
    }
    return read;
}

/// Reads the texts of one command line.
class Reader final {
  public:
    Reader(sys_seconds now, const TimeZone& zone) : now_(now), zone_(zone) {}

    sys_seconds since(const std::string& text) const {
        return read(text, sys_seconds::min(), [&](const ClockText& clock) {
            return clock.day ? *clock.day + clock.timeOfDay.value_or(seconds(0)) : lastTime(*clock.timeOfDay);
        });
    }

    sys_seconds until(const std::string& text, const std::optional<sys_seconds>& since) const {
        constexpr seconds kEndOfDay = days(1) - seconds(1);
        return read(text, sys_seconds::max(), [&](const ClockText& clock) {
            if (clock.day) {
                return *clock.day + clock.timeOfDay.value_or(kEndOfDay);
            }
            if (!since) {
                return lastTime(*clock.timeOfDay);
            }
            const local_seconds begin = zone_.clockAt(*since);
            const local_seconds sameDay = std::chrono::floor<days>(begin) + *clock.timeOfDay;
            return sameDay < begin ? sameDay + days(1) : sameDay;
        });
    }

  private:
    /// Of the two moments at which the clock shows the time in the hour that comes twice in autumn, the one
    /// that makes the span longer is meant: `notBefore` chooses it.
    template <typename Choose>
    sys_seconds read(const std::string& text, sys_seconds notBefore, Choose&& choose) const {
        if (text == "now") {
            return now_;
        }
        if (const auto back = readSpanBack(text)) {
            return now_ - *back;
        }
        if (const auto moment = readEpoch(text)) {
            return *moment;
        }
        const ClockText clock = readClockText(text, std::chrono::floor<days>(zone_.clockAt(now_)));
        const local_seconds chosen = choose(clock);
        return clock.offset ? sys_seconds(chosen.time_since_epoch() - *clock.offset)
                            : zone_.momentOf(chosen, notBefore);
    }

    /// The last time that the clock showed this.
    local_seconds lastTime(seconds timeOfDay) const {
        const local_seconds clock = zone_.clockAt(now_);
        const local_seconds sameDay = std::chrono::floor<days>(clock) + timeOfDay;
        return sameDay > clock ? sameDay - days(1) : sameDay;
    }

    sys_seconds now_;
    const TimeZone& zone_;
};

}  // namespace

Span readSpan(const std::optional<std::string>& since, const std::optional<std::string>& until,
              sys_seconds now, const TimeZone& zone) {
    const Reader reader(now, zone);
    Span span;
    if (since) {
        span.since = reader.since(*since);
    }
    if (until) {
        span.until = reader.until(*until, span.since);
    }
    return span;
}

sys_seconds readMoment(const std::string& text) {
    const TimeZone zone = TimeZone::local();
    return Reader(sys_seconds(seconds(platform::now())), zone).since(text);
}

}  // namespace logreader
