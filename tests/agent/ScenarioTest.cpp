#include "sim/Scenario.h"
#include "support/Rows.h"

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

struct WordsRow {
    support::RowName name;
    const char* line;
    std::vector<std::string> expected;
};

const support::Rows<WordsRow> wordsRows(
    "Scenario/Words",
    {
        {"blanks around", "  a\tb \r", {"a", "b"}},
        {"remark", "a#b c", {"a"}},
        {"no remark in quotes", "\"a#b\" c", {"a#b", "c"}},
        {"escapes and nothing", R"("\n\t\"\\" "")", {"\n\t\"\\", ""}},
        {"quotes inside a word", R"(N="2026:03:01 x"y C:\dir)", {"N=2026:03:01 xy", "C:\\dir"}},
    },
    [](const WordsRow& row) {
        std::vector<std::string> texts;
        for (const Word& word : splitWords(row.line)) {
            texts.push_back(word.text);
        }
        EXPECT_EQ(texts, row.expected);
    });

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
        "\xef\xbb\xbf# first\nclock 2026-03-01T10:00:00Z\n\n1.5 end\n+0.25 connect 10 \"30\" # c\n1.75 unload\n1000000 "
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

struct VerbRow {
    support::RowName name;  ///< also the line
    const char* words;
};

const support::Rows<VerbRow> verbRows("Scenario/AcceptedVerbs",
                                      {
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
                                      },
                                      [](const VerbRow& row) {
                                          EXPECT_EQ(parseAction(splitWords(row.name.text)).verb->words,
                                                    row.words);
                                      });

const std::string kEndless(300'000, '1');

struct RefusedRow {
    support::RowName name;
    std::string text;
    std::string expected;  ///< behind the name of the file
};

const support::Rows<RefusedRow> refusedRows(
    "Scenario/RefusedLines",
    {
        {"time alone", "1", "1: a time without a verb"},
        {"no number as a time", "x end", "1: 'x' is no time in seconds"},
        {"negative time", "-1 end", "1: '-1' is no time in seconds"},
        {"time without decimals", "1. end", "1: '1.' is no time in seconds"},
        {"time with an exponent", "1e3 end", "1: '1e3' is no time in seconds"},
        {"time that is too large", "999999999999 end", "1: '999999999999' is too large"},
        {"endless time", kEndless + " end", "1: '" + kEndless + "' is too large"},
        {"time before the line above", "2 unload\n\n1 end", "3: time 1 lies before the line above"},
        {"half a verb", "0 start", "1: unknown verb 'start'"},
        {"misspelled connect", "0 conect 10 30",
         "1: unknown verb 'conect 10'; did you mean 'connect MINUTES RATE'?"},
        {"misspelled start rsm", "0 start rms x",
         "1: unknown verb 'start rms'; did you mean 'start rsm PARAM'?"},
        {"verb in quotes", "0 \"start rsm\"", "1: too few arguments (start rsm PARAM)"},
        {"unknown family", "0 start engine x", "1: unknown verb 'start engine'"},
        {"start without its parameter", "0 start rsm", "1: too few arguments (start rsm PARAM)"},
        {"one argument too many", "0 connect 10 30 5", "1: too many arguments (connect MINUTES RATE)"},
        {"argument where none is taken", "0 unload now", "1: too many arguments (unload)"},
        {"stop with a parameter", "0 stop rsm x", "1: 'x' can only be null (stop rsm [null])"},
        {"level that is too large", "0 log 256 x", "1: '256' is too large (log LEVEL TEXT)"},
        {"level without a number", "0 log loud x", "1: 'loud' is no level (log LEVEL TEXT)"},
        {"negative count", "0 poll-interval -1", "1: '-1' is no whole number (poll-interval COUNT)"},
        {"count with a unit", "0 poll-interval 5s", "1: '5s' is no whole number (poll-interval COUNT)"},
        {"count with decimals", "0 poll-interval 1.5", "1: '1.5' is no whole number (poll-interval COUNT)"},
        {"count that is too large", "0 poll-interval 4294967296",
         "1: '4294967296' is too large (poll-interval COUNT)"},
        {"step that is too large", "0 clock-step 1000000000001",
         "1: '1000000000001' is too large (clock-step OFFSET)"},
        {"days without a number", "0 age p x", "1: 'x' is no number (age FILE DAYS)"},
        {"negative delay", "0 enterprise delay -1",
         "1: '-1' is no time in seconds (enterprise delay SECONDS)"},
        {"no switch", "0 enterprise thread", "1: too few arguments (enterprise thread on|off)"},
        {"neither on nor off", "0 log-lock yes", "1: 'yes' is none of on, off (log-lock on|off)"},
        {"unknown way to end", "0 thread-destroy never",
         "1: 'never' is none of sleep, anywhere, unwind, leave (thread-destroy "
         "sleep|anywhere|unwind|leave)"},
        {"null as a file", "0 show null", "1: 'null' must be a text (show FILE)"},
        {"null as an operation", "0 call null", "1: 'null' must be a text (call OPERATION [NAME=VALUE...])"},
        {"argument without a value", "0 command X a",
         "1: 'a' is not NAME=VALUE (command NAME [NAME=VALUE...|null])"},
        {"null and more", "0 command X null a=1",
         "1: 'null' is not NAME=VALUE (command NAME [NAME=VALUE...|null])"},
        {"null for an operation", "0 call op null",
         "1: 'null' is not NAME=VALUE (call OPERATION [NAME=VALUE...])"},
        {"open quotes", "0 audit \"x", "1: quotes do not end"},
        {"unknown escape", "0 audit \"\\x\"", "1: unknown escape \\x"},
        {"late clock", "0 end\nclock 2026-03-01T10:00:00Z",
         "2: 'clock' can stand once, before the first action"},
        {"second clock", "clock 2026-03-01T10:00:00Z\nclock 2026-03-01T10:00:00Z",
         "2: 'clock' can stand once, before the first action"},
        {"clock without such a day", "clock 2026-02-30T10:00:00Z",
         "1: '2026-02-30T10:00:00Z' is no time like 2026-03-01T10:00:00Z"},
        {"clock without a time", "clock 2026-03-01", "1: '2026-03-01' is no time like 2026-03-01T10:00:00Z"},
    },
    [](const RefusedRow& row) { EXPECT_EQ(refusal(row.text), "file:" + row.expected); });

TEST(Scenario, AbsentFile) {
    EXPECT_THROW(readScenarioFile("/nonexistent"), std::runtime_error);
}

}  // namespace
}  // namespace sim
