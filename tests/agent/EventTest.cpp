#include "sim/trace/Event.h"
#include "sim/trace/Timeline.h"
#include "support/Rows.h"

#include <gtest/gtest.h>

namespace sim {
namespace {

using std::chrono::milliseconds;

using Text = std::optional<std::string>;
using List = std::optional<agent::NamedValues>;

struct JsonRow {
    support::RowName name;
    Value value;
    std::string expected;
};

const support::Rows<JsonRow> jsonRows(
    "Event/JsonValues",
    {
        {"number", -7, "-7"},
        {"null", Text(), "null"},
        {"escapes", Text("a\"\\\n\t\r\b\f\x01\x7f\xe9/"), "\"a\\\"\\\\\\n\\t\\r\\b\\f\\u0001\x7f\\u00e9/\""},
        {"outermost characters of two bytes", Text("\xc2\x80\xdf\xbf"), "\"\xc2\x80\xdf\xbf\""},
        {"outermost characters of three bytes", Text("\xe0\xa0\x80\xed\x9f\xbf\xef\xbf\xbf"),
         "\"\xe0\xa0\x80\xed\x9f\xbf\xef\xbf\xbf\""},
        {"outermost characters of four bytes", Text("\xf0\x90\x80\x80\xf4\x8f\xbf\xbf"),
         "\"\xf0\x90\x80\x80\xf4\x8f\xbf\xbf\""},
        {"two bytes for what takes one", Text("\xc1\xbf"), R"("\u00c1\u00bf")"},
        {"three bytes for what takes two", Text("\xe0\x9f\xbf"), R"("\u00e0\u009f\u00bf")"},
        {"surrogate", Text("\xed\xa0\x80"), R"("\u00ed\u00a0\u0080")"},
        {"four bytes for what takes three", Text("\xf0\x8f\xbf\xbf"), R"("\u00f0\u008f\u00bf\u00bf")"},
        {"beyond the last character", Text("\xf4\x90\x80\x80"), R"("\u00f4\u0090\u0080\u0080")"},
        {"no first byte", Text("\xf5\x80\x80\x80"), R"("\u00f5\u0080\u0080\u0080")"},
        {"cut at the end", Text("\xe2\x82"), R"("\u00e2\u0082")"},
        {"cut inside", Text("\xe2\x82x\x80"), R"("\u00e2\u0082x\u0080")"},
        {"null list", List(), "null"},
        {"empty list", List(agent::NamedValues{}), "[]"},
        {"list", List({{"a", "1"}, {"b", std::nullopt}}), R"([["a","1"],["b",null]])"},
    },
    [](const JsonRow& row) {
        EXPECT_EQ(asJson({Instant(1'234'567), milliseconds(0), "host", "log", {{"x", row.value}}, "why"}),
                  R"({"t":1.234,"thread":"host","event":"log","x":)" + row.expected + "}\n");
    });

struct TimelineRow {
    support::RowName name;
    const char* event;
    std::vector<std::pair<std::string_view, Value>> fields;
    std::string expected;
};

const support::Rows<TimelineRow> timelineRows(
    "Timeline/SaysWhatHappened",
    {
        {"call that failed",
         "call",
         {{"verb", Text("connect 1 2")}, {"result", -1}, {"stage", Text("create")}, {"response", Text()}},
         "call: connect 1 2 -> -1, no further than create"},
        {"command with an answer",
         "call",
         {{"verb", Text("command X")}, {"result", 0}, {"answer", List({{"A", "b"}, {"Zero", "0"}})}},
         "call: command X -> 0, answer A b"},
        {"line end", "log", {{"level", 50}, {"text", Text("\nline")}}, "log 50: \"\\nline\""},
        {"other letters",
         "log",
         {{"level", 40}, {"text", Text("R\xc3\xb6ntgen")}},
         "log 40: \"R\xc3\xb6ntgen\""},
        {"what turns or ends a line unseen",
         "log",
         {{"level", 40}, {"text", Text("a\x7f\u0085\u2028\u202eb")}},
         "log 40: \"a\\x7f\\xc2\\x85\\u2028\\u202eb\""},
        {"refused profile",
         "update-asset",
         {{"result", 1}, {"properties", List({{"RSM_MODE", "NOT_ACTIVE"}, {"RSM_START_TIME", "0"}})}},
         "profile: refused by the enterprise: RSM_MODE NOT_ACTIVE"},
        {"thread without a start",
         "thread-start",
         {{"name", Text("Data Polling")}, {"result", -1}},
         "thread: Data Polling cannot be started"},
        {"empty file", "file", {{"path", Text("a.xml")}, {"text", Text()}}, "file: a.xml holds nothing"},
    },
    [](const TimelineRow& row) {
        const auto wall = std::chrono::hours(24) + milliseconds(61'999);
        EXPECT_EQ(asTimeline({Instant(1'234'567), wall, "host", row.event, row.fields, "why"}),
                  "       1.234  1970-01-02 00:01:01Z  host          " + row.expected + "  (why)\n");
    });

}  // namespace
}  // namespace sim
