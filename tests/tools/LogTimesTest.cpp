// Zones, and the texts of --since and --until.
#include "EntryWriter.h"
#include "Options.h"
#include "TimeWords.h"
#include "TimeZone.h"
#include "support/Rows.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace logreader {
namespace {

using std::chrono::local_seconds;
using std::chrono::sys_seconds;

const char* const kMiddleEurope = "CET-1CEST,M3.5.0,M10.5.0/3";

std::string isoText(sys_seconds moment, const TimeZone& zone) {
    std::string line;
    EntryWriter(Form::shown, zone).append(line, {}, moment, {});
    return line.substr(0, line.find(' '));
}

local_seconds clockOf(int month, int day, int hour, int minute = 0) {
    return std::chrono::local_days(std::chrono::year(2026) / month / day) + std::chrono::hours(hour) +
           std::chrono::minutes(minute);
}

const sys_seconds kNoon = std::chrono::sys_days(std::chrono::year(2026) / 7 / 1) + std::chrono::hours(12);

struct ZoneRow {
    support::RowName name;  ///< also the zone's
    const char* expected;
};

const support::Rows<ZoneRow> zoneRows("TimeZone/Names",
                                      {{"UTC", "2026-07-01T12:00:00Z"},
                                       {"+05:30", "2026-07-01T17:30:00+05:30"},
                                       {"-0330", "2026-07-01T08:30:00-03:30"},
                                       {"+00:00", "2026-07-01T12:00:00Z"},
                                       {"+14:00", "2026-07-02T02:00:00+14:00"},
                                       {kMiddleEurope, "2026-07-01T14:00:00+02:00"},
                                       {"EST5", "2026-07-01T07:00:00-05:00"},
                                       {"<-03>3", "2026-07-01T09:00:00-03:00"}},
                                      [](const ZoneRow& row) {
                                          EXPECT_EQ(isoText(kNoon, TimeZone::named(row.name.text)),
                                                    row.expected);
                                      });

TEST(TimeZone, RefusedNames) {
    for (const char* const name :
         {"", "Mars/Olympus", "../../etc/passwd", "Europe/../zone.tab", "+25:00", "+02:60", ".", "/", "X"}) {
        EXPECT_THROW(TimeZone::named(name), UsageError) << name;
    }
}

TEST(TimeZone, LeavesTheProcessZoneAlone) {
    ::setenv("TZ", "ABC-3", 1);
    TimeZone::named(kMiddleEurope);
    EXPECT_STREQ(std::getenv("TZ"), "ABC-3");
    EXPECT_EQ(isoText(sys_seconds(), TimeZone::local()), "1970-01-01T03:00:00+03:00");
}

// Every hour of the century there and back.
TEST(TimeZone, ThereAndBack) {
    const TimeZone zone = TimeZone::named(kMiddleEurope);
    sys_seconds moment = std::chrono::sys_days(std::chrono::year(2000) / 1 / 1);
    for (; moment < std::chrono::sys_days(std::chrono::year(2099) / 1 / 1); moment += std::chrono::hours(1)) {
        ASSERT_EQ(zone.momentOf(zone.clockAt(moment), moment), moment);
    }
}

TEST(TimeZone, TheHourThatComesTwice) {
    const TimeZone zone = TimeZone::named(kMiddleEurope);
    const auto momentsOf = [&](const std::vector<local_seconds>& clocks) {
        std::string text;
        sys_seconds moment = sys_seconds::min();
        for (const local_seconds clock : clocks) {
            moment = zone.momentOf(clock, moment);
            text += isoText(moment, zone).substr(11) + " ";
        }
        return text;
    };
    EXPECT_EQ(momentsOf({clockOf(10, 25, 1, 59), clockOf(10, 25, 2, 10), clockOf(10, 25, 2, 50),
                         clockOf(10, 25, 2, 20), clockOf(10, 25, 2, 50), clockOf(10, 25, 3)}),
              "01:59:00+02:00 02:10:00+02:00 02:50:00+02:00 02:20:00+01:00 02:50:00+01:00 03:00:00+01:00 ");
    // Left out in spring: a clock that showed it was put forward late.
    EXPECT_EQ(momentsOf({clockOf(3, 29, 2, 30)}), "03:30:00+02:00 ");
}

// Sunday 1 March 2026, 08:30 in the zone.
const sys_seconds kNow = std::chrono::sys_days(std::chrono::year(2026) / 3 / 1) + std::chrono::minutes(450);

struct SpanRow {
    support::RowName name;
    std::optional<std::string> since;
    std::optional<std::string> until;
    const char* expected;
};

const support::Rows<SpanRow> spanRows(
    "TimeWords/Spans",
    {
        {"day", "2026-02-28", {}, "2026-02-28T00:00:00+01:00 "},
        {"one digit each", "2026-2-8T9:05", {}, "2026-02-08T09:05:00+01:00 "},
        {"blank between", "2026-02-28 22:00:07", {}, "2026-02-28T22:00:07+01:00 "},
        {"UTC", "2026-02-28T22:00:07Z", {}, "2026-02-28T23:00:07+01:00 "},
        {"offset", "2026-02-28T22:00-05:00", {}, "2026-03-01T04:00:00+01:00 "},
        {"summer", "2025-07-01T12:00", {}, "2025-07-01T12:00:00+02:00 "},
        {"today", "today", {}, "2026-03-01T00:00:00+01:00 "},
        {"yesterday", "yesterday", {}, "2026-02-28T00:00:00+01:00 "},
        {"from yesterday on", "yesterday 18:00", "06:00",
         "2026-02-28T18:00:00+01:00 2026-03-01T06:00:00+01:00"},
        {"this very minute", "08:30", {}, "2026-03-01T08:30:00+01:00 "},
        {"next minute was yesterday", "08:31", {}, "2026-02-28T08:31:00+01:00 "},
        {"over midnight", "22:00", "06:00", "2026-02-28T22:00:00+01:00 2026-03-01T06:00:00+01:00"},
        {"before midnight", "22:00", "23:00:30", "2026-02-28T22:00:00+01:00 2026-02-28T23:00:30+01:00"},
        {"night of a day", "2026-02-20 22:00", "06:00",
         "2026-02-20T22:00:00+01:00 2026-02-21T06:00:00+01:00"},
        {"end alone", {}, "06:00", " 2026-03-01T06:00:00+01:00"},
        {"later today was yesterday", {}, "09:00", " 2026-02-28T09:00:00+01:00"},
        {"end of a day", {}, "yesterday", " 2026-02-28T23:59:59+01:00"},
        {"ago", "-2h", "-1h30m", "2026-03-01T06:30:00+01:00 2026-03-01T07:00:00+01:00"},
        {"week ago", "-1w", "now", "2026-02-22T08:30:00+01:00 2026-03-01T08:30:00+01:00"},
        {"days and seconds ago", "-3d", "-90s", "2026-02-26T08:30:00+01:00 2026-03-01T08:28:30+01:00"},
        {"tomorrow", {}, "tomorrow", " 2026-03-02T23:59:59+01:00"},
        {"in words", "1 hour 30 minutes ago", "45 min ago",
         "2026-03-01T07:00:00+01:00 2026-03-01T07:45:00+01:00"},
        {"seconds since 1970", "@1772350205", "@1772350205.9",
         "2026-03-01T08:30:05+01:00 2026-03-01T08:30:05+01:00"},
        {"fractions", "08:29:59.5", "08:29:59.25", "2026-03-01T08:29:59+01:00 2026-03-01T08:29:59+01:00"},
        {"hour that comes twice", "2025-10-26 02:30", "2025-10-26 02:30",
         "2025-10-26T02:30:00+02:00 2025-10-26T02:30:00+01:00"},
    },
    [](const SpanRow& row) {
        const TimeZone zone = TimeZone::named(kMiddleEurope);
        const Span span = readSpan(row.since, row.until, kNow, zone);
        EXPECT_EQ((span.since ? isoText(*span.since, zone) : "") + " " +
                      (span.until ? isoText(*span.until, zone) : ""),
                  row.expected);
    });

TEST(TimeWords, RefusedTimes) {
    const TimeZone zone = TimeZone::named(kMiddleEurope);
    for (const char* const text : {"",
                                   " ",
                                   "-",
                                   "-2",
                                   "-2y",
                                   "-h",
                                   "2026-02-29",
                                   "2026-13-01",
                                   "24:00",
                                   "1:60",
                                   "1:2",
                                   "22",
                                   "2026-03-0110:00",
                                   "today10:00",
                                   "Z",
                                   "10:00:61",
                                   "-9999999w",
                                   "@",
                                   "@x",
                                   "1 hour",
                                   "hour ago",
                                   "1 year ago",
                                   " ago",
                                   "10:00:05."}) {
        EXPECT_THROW(readSpan(text, std::nullopt, kNow, zone), UsageError) << text;
    }
}

}  // namespace
}  // namespace logreader
