#include "Scenario.h"

#include <sstream>
#include <stdexcept>

#include <gtest/gtest.h>

namespace sim {
namespace {

Scenario parsed(const std::string& text) {
    std::istringstream stream(text);
    return readScenario(stream, "file");
}

std::string refusal(const std::string& text) {
    try {
        parsed(text);
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "accepted";
}

TEST(Scenario, Words) {
    const std::pair<const char*, std::vector<std::string>> cases[] = {
        {"  a\tb \r", {"a", "b"}},
        {"a#b c", {"a"}},
        {"\"a#b\" c", {"a#b", "c"}},
        {R"("\n\t\"\\" "")", {"\n\t\"\\", ""}},
        {R"(N="2026:03:01 x"y C:\dir)", {"N=2026:03:01 xy", "C:\\dir"}},
    };
    for (const auto& [line, expected] : cases) {
        std::vector<std::string> texts;
        for (const Word& word : splitWords(line)) {
            texts.push_back(word.text);
        }
        EXPECT_EQ(texts, expected) << line;
    }
}

TEST(Scenario, OnlyTheBareWordIsNull) {
    const auto words = splitWords("null \"null\" A=null A=\"null\" A=b=null A");
    EXPECT_EQ(words[0].argument(), nullptr);
    EXPECT_STREQ(words[1].argument(), "null");
    EXPECT_EQ(asAssignment(words[2])->value, std::nullopt);
    EXPECT_EQ(asAssignment(words[3])->value, "null");
    EXPECT_EQ(asAssignment(words[4])->value, "b=null");
    EXPECT_FALSE(asAssignment(words[5]).has_value());
}

TEST(Scenario, TimesAndPlaces) {
    const Scenario scenario = parsed(
        "# first\nclock 2026-03-01T10:00:00Z\n\n1.5 end\n+0.25 connect 10 \"30\" # c\n1.75 unload\n1000000 "
        "end\n");
    ASSERT_EQ(scenario.actions.size(), 4U);
    EXPECT_EQ(scenario.clock, std::chrono::seconds(1772359200));
    const Action& connect = scenario.actions[1];
    EXPECT_EQ(connect.time, Instant(1'750'000));
    EXPECT_EQ(connect.verb->words, "connect");
    EXPECT_EQ(connect.text, "connect 10 30");
    EXPECT_EQ(connect.arguments.size(), 2U);
    EXPECT_EQ(connect.line, 5);
    EXPECT_EQ(scenario.actions[2].time, Instant(1'750'000));
}

TEST(Scenario, AcceptedVerbs) {
    const std::pair<const char*, const char*> cases[] = {
        {"start data-source null", "start data-source"},
        {"stop rsm", "stop rsm"},
        {"stop rsm null", "stop rsm"},
        {"disconnect", "disconnect"},
        {"disconnect null", "disconnect"},
        {"call anything", "call"},
        {"call op a=1 b=", "call"},
        {"command null", "command"},
        {"command X null", "command"},
        {"command X a=1 b=null", "command"},
        {"log 255 null", "log"},
        {"log audit text", "log"},
        {"age p -0.5", "age"},
        {"clock-step -3600", "clock-step"},
        {"enterprise refuse", "enterprise"},
        {"enterprise delay 0.5", "enterprise delay"},
        {"enterprise thread off", "enterprise thread"},
        {"thread-destroy unwind", "thread-destroy"},
    };
    for (const auto& [text, words] : cases) {
        EXPECT_EQ(parseAction(splitWords(text)).verb->words, words) << text;
    }
}

TEST(Scenario, RefusedLines) {
    const std::pair<const char*, const char*> cases[] = {
        {"1", "file:1: a time without a verb"},
        {"x end", "file:1: 'x' is no time in seconds"},
        {"-1 end", "file:1: '-1' is no time in seconds"},
        {"1. end", "file:1: '1.' is no time in seconds"},
        {"1e3 end", "file:1: '1e3' is no time in seconds"},
        {"999999999999 end", "file:1: '999999999999' is too large"},
        {"2 unload\n\n1 end", "file:3: time 1 lies before the line above"},
        {"0 start", "file:1: unknown verb 'start'"},
        {"0 conect 10 30", "file:1: unknown verb 'conect 10'; did you mean 'connect MINUTES RATE'?"},
        {"0 start rms x", "file:1: unknown verb 'start rms'; did you mean 'start rsm PARAM'?"},
        {"0 \"start rsm\"", "file:1: too few arguments (start rsm PARAM)"},
        {"0 start engine x", "file:1: unknown verb 'start engine'"},
        {"0 start rsm", "file:1: too few arguments (start rsm PARAM)"},
        {"0 connect 10 30 5", "file:1: too many arguments (connect MINUTES RATE)"},
        {"0 unload now", "file:1: too many arguments (unload)"},
        {"0 stop rsm x", "file:1: 'x' can only be null (stop rsm [null])"},
        {"0 log 256 x", "file:1: '256' is too large (log LEVEL TEXT)"},
        {"0 log loud x", "file:1: 'loud' is no level (log LEVEL TEXT)"},
        {"0 poll-interval -1", "file:1: '-1' is no whole number (poll-interval COUNT)"},
        {"0 poll-interval 5s", "file:1: '5s' is no whole number (poll-interval COUNT)"},
        {"0 poll-interval 1.5", "file:1: '1.5' is no whole number (poll-interval COUNT)"},
        {"0 poll-interval 4294967296", "file:1: '4294967296' is too large (poll-interval COUNT)"},
        {"0 clock-step 1000000000001", "file:1: '1000000000001' is too large (clock-step OFFSET)"},
        {"0 age p x", "file:1: 'x' is no number (age FILE DAYS)"},
        {"0 enterprise delay -1", "file:1: '-1' is no time in seconds (enterprise delay SECONDS)"},
        {"0 enterprise thread", "file:1: too few arguments (enterprise thread on|off)"},
        {"0 log-lock yes", "file:1: 'yes' is none of on, off (log-lock on|off)"},
        {"0 thread-destroy never",
         "file:1: 'never' is none of sleep, anywhere, unwind, leave (thread-destroy "
         "sleep|anywhere|unwind|leave)"},
        {"0 show null", "file:1: 'null' must be a text (show FILE)"},
        {"0 call null", "file:1: 'null' must be a text (call OPERATION [NAME=VALUE...])"},
        {"0 command X a", "file:1: 'a' is not NAME=VALUE (command NAME [NAME=VALUE...|null])"},
        {"0 command X null a=1", "file:1: 'null' is not NAME=VALUE (command NAME [NAME=VALUE...|null])"},
        {"0 call op null", "file:1: 'null' is not NAME=VALUE (call OPERATION [NAME=VALUE...])"},
        {"0 audit \"x", "file:1: quotes do not end"},
        {"0 audit \"\\x\"", "file:1: unknown escape \\x"},
        {"0 end\nclock 2026-03-01T10:00:00Z", "file:2: 'clock' can stand once, before the first action"},
        {"clock 2026-03-01T10:00:00Z\nclock 2026-03-01T10:00:00Z",
         "file:2: 'clock' can stand once, before the first action"},
        {"clock 2026-02-30T10:00:00Z", "file:1: '2026-02-30T10:00:00Z' is no time like 2026-03-01T10:00:00Z"},
        {"clock 2026-03-01", "file:1: '2026-03-01' is no time like 2026-03-01T10:00:00Z"},
    };
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(refusal(text), expected) << text;
    }
    EXPECT_THROW(readScenarioFile("/nonexistent"), std::runtime_error);
}

}  // namespace
}  // namespace sim
