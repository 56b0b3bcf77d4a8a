#include "sim/scenario/Scenario.h"
#include "support/Rows.h"

#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

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

/// A line of the file beside this one, whose head says how they are written.
void checkCase(const std::string& line, const std::string& expected) {
    if (expected.starts_with("is ")) {
        EXPECT_EQ(parseAction(splitWords(line)).verb->words, expected.substr(3));
    } else {
        EXPECT_EQ(refusal(line), "file:" + expected);
    }
}

const int caseCount = [] {
    int count = 0;
    std::ifstream file(CASES);
    int number = 1;
    for (std::string text; std::getline(file, text); ++number) {
        if (const auto arrow = text.find(" => "); arrow != std::string::npos && text[0] != '#') {
            const std::string line = support::replaced(text.substr(0, arrow), "|", "\n");
            support::registerRow("Scenario/Cases", {line, CASES, number},
                                 [=] { checkCase(line, text.substr(arrow + 4)); });
            ++count;
        }
    }
    return count;
}();

TEST(Scenario, FindsItsCases) {
    EXPECT_GT(caseCount, 50);
}

TEST(Scenario, EndlessTime) {
    const std::string endless(300'000, '1');
    EXPECT_EQ(refusal(endless + " end"), "file:1: '" + endless + "' is too large");
}

}  // namespace
}  // namespace sim
