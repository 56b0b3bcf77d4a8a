#include "sim/Event.h"
#include "sim/Timeline.h"

#include <gtest/gtest.h>

namespace sim {
namespace {

using std::chrono::milliseconds;

Event eventWith(std::string_view key, Value value) {
    return {Instant(1'234'567), milliseconds(0), "host", "log", {{key, std::move(value)}}, "why"};
}

TEST(Event, JsonValues) {
    const std::pair<Value, const char*> cases[] = {
        {std::int64_t{-7}, "-7"},
        {std::optional<std::string>(), "null"},
        {std::optional<std::string>("a\"\\\n\t\r\b\f\x01\x7f\xe9/"), R"("a\"\\\n\t\r\b\f\u0001)"
                                                                     "\x7f"
                                                                     R"(\u00e9/")"},
        // Characters as they are: of two, three and four bytes, the outermost of each.
        {std::optional<std::string>("\xc2\x80\xdf\xbf\xe0\xa0\x80\xed\x9f\xbf\xef\xbf\xbf\xf0\x90\x80\x80"
                                    "\xf4\x8f\xbf\xbf"),
         "\"\xc2\x80\xdf\xbf\xe0\xa0\x80\xed\x9f\xbf\xef\xbf\xbf\xf0\x90\x80\x80\xf4\x8f\xbf\xbf\""},
        // No characters: too long for what they say, a surrogate, beyond the last one, cut, no first byte.
        {std::optional<std::string>("\xc1\xbf"), R"("\u00c1\u00bf")"},
        {std::optional<std::string>("\xe0\x9f\xbf"), R"("\u00e0\u009f\u00bf")"},
        {std::optional<std::string>("\xed\xa0\x80"), R"("\u00ed\u00a0\u0080")"},
        {std::optional<std::string>("\xf0\x8f\xbf\xbf"), R"("\u00f0\u008f\u00bf\u00bf")"},
        {std::optional<std::string>("\xf4\x90\x80\x80"), R"("\u00f4\u0090\u0080\u0080")"},
        {std::optional<std::string>("\xf5\x80\x80\x80"), R"("\u00f5\u0080\u0080\u0080")"},
        {std::optional<std::string>("\xe2\x82"), R"("\u00e2\u0082")"},
        {std::optional<std::string>("\xe2\x82x\x80"), R"("\u00e2\u0082x\u0080")"},
        {std::optional<agent::NamedValues>(), "null"},
        {std::optional<agent::NamedValues>(agent::NamedValues{}), "[]"},
        {std::optional<agent::NamedValues>(agent::NamedValues{{"a", "1"}, {"b", std::nullopt}}),
         R"([["a","1"],["b",null]])"},
    };
    for (const auto& [value, expected] : cases) {
        EXPECT_EQ(asJson(eventWith("x", value)),
                  std::string(R"({"t":1.234,"thread":"host","event":"log","x":)") + expected + "}\n");
    }
}

TEST(Timeline, SaysWhatHappened) {
    using Text = std::optional<std::string>;
    using List = std::optional<agent::NamedValues>;
    struct Case {
        std::string_view name;
        std::vector<std::pair<std::string_view, Value>> fields;
        const char* expected;
    };
    const Case cases[] = {
        {"call",
         {{"verb", Text("connect 1 2")}, {"result", -1}, {"stage", Text("create")}, {"response", Text()}},
         "call: connect 1 2 -> -1, no further than create"},
        {"call",
         {{"verb", Text("command X")}, {"result", 0}, {"answer", List({{"A", "b"}, {"Zero", "0"}})}},
         "call: command X -> 0, answer A b"},
        {"log", {{"level", 50}, {"text", Text("\nline")}}, "log 50: \"\\nline\""},
        {"log", {{"level", 40}, {"text", Text("R\xc3\xb6ntgen")}}, "log 40: \"R\xc3\xb6ntgen\""},
        {"update-asset",
         {{"result", 1}, {"properties", List({{"RSM_MODE", "NOT_ACTIVE"}, {"RSM_START_TIME", "0"}})}},
         "profile: refused by the enterprise: RSM_MODE NOT_ACTIVE"},
        {"thread-start",
         {{"name", Text("Data Polling")}, {"result", -1}},
         "thread: Data Polling cannot be started"},
        {"file", {{"path", Text("a.xml")}, {"text", Text()}}, "file: a.xml holds nothing"},
    };
    const auto wall = std::chrono::hours(24) + milliseconds(61'999);
    for (const Case& one : cases) {
        EXPECT_EQ(
            asTimeline({Instant(1'234'567), wall, "host", one.name, one.fields, "why"}),
            std::string("       1.234  1970-01-02 00:01:01Z  host          ") + one.expected + "  (why)\n");
    }
}

}  // namespace
}  // namespace sim
