#include "session/SessionData.h"
#include "support/Rows.h"

#include <nlohmann/json.hpp>
#include <random>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

struct Sample {
    std::int64_t time;
    std::string body;
};

std::string body(int number) {
    return R"({"thread":"host","event":"file","path":")" + std::to_string(number) +
           (number % 5 == 3 ? R"(","text":"ä\u00e4<x>"})" : R"(","text":"<x>"})");
}

/// Those of a page, some of which tell only how they differ from another one.
std::vector<std::string> bodiesIn(const nlohmann::json& page) {
    std::vector<std::string> bodies;
    for (const auto& one : page["bodies"]) {
        if (one.is_string()) {
            bodies.push_back(one);
            continue;
        }
        const std::string other = bodies.at(bodies.size() - one[0].get<std::size_t>());
        bodies.push_back(other.substr(0, one[1]) + one[2].get<std::string>() +
                         other.substr(other.size() - one[3].get<std::size_t>()));
    }
    return bodies;
}

std::vector<std::string> linesOf(const std::vector<Sample>& samples) {
    std::vector<std::string> lines;
    for (const auto& [time, text] : samples) {
        char start[32];
        std::snprintf(start, sizeof start, R"({"t":%.3f,)", static_cast<double>(time) / 1000);
        lines.push_back(start + text.substr(1));
    }
    return lines;
}

/// Rounds of a cycle whose steps come `delay` after each other, as polling does.
std::vector<Sample> rounds(int count, int length, int delay) {
    std::vector<Sample> samples;
    for (int i = 0; i < count * length; ++i) {
        samples.push_back({std::int64_t{delay + length} * (i / length) + i % length, body(i % length)});
    }
    return samples;
}

std::vector<Sample> operator+(std::vector<Sample> left, const std::vector<Sample>& right) {
    const std::int64_t end = left.empty() ? 0 : left.back().time;
    for (const Sample& sample : right) {
        left.push_back({end + sample.time, sample.body});
    }
    return left;
}

std::vector<Sample> noise(unsigned int seed, int count, int kinds) {
    std::mt19937 random(seed);
    std::vector<Sample> samples;
    std::int64_t time = 0;
    for (int i = 0; i < count; ++i) {
        time += random() % 3;
        samples.push_back({time, body(static_cast<int>(random() % static_cast<unsigned int>(kinds)))});
    }
    return samples;
}

struct Row {
    support::RowName name;
    std::vector<Sample> (*samples)();
    bool isTooMuch = false;  ///< for a page that keeps `kMost` of what does not repeat
};
constexpr std::size_t kMost = 2000;

const std::initializer_list<Row> kRows = {
    {"nothing", [] { return std::vector<Sample>(); }},
    {"one event",
     [] {
         return std::vector<Sample>(1, {1500, body(1)});
     }},
    {"polls", [] { return rounds(1000, 4, 10000); }},
    {"polls that stop in the middle of a round", [] { return rounds(50, 4, 10000) + rounds(1, 3, 0); }},
    {"polls, then others, then polls at another rate",
     [] { return rounds(50, 3, 10000) + noise(1, 20, 9) + rounds(50, 3, 15000); }},
    {"polls of days, then many different events", [] { return rounds(3000, 3, 10000) + noise(4, 9000, 500); },
     true},
    {"a cycle too long to be seen", [] { return rounds(10, 40, 5); }},
    {"a cycle of cycles",
     [] {
         return rounds(5, 2, 10) + rounds(1, 1, 1) + rounds(5, 2, 10) + rounds(1, 1, 1) + rounds(5, 2, 10);
     }},
    {"few different events in any order", [] { return noise(2, 3000, 2); }, true},
    {"many different events", [] { return noise(3, 9000, 9000); }, true},
    {"one event again and again", [] { return rounds(5000, 1, 0); }},
};

const support::Rows<Row> lineRows("SessionData/LinesComeBackAsTheyWere", kRows, [](const Row& row) {
    const std::vector<Sample> samples = row.samples();
    session::SessionData data;
    std::vector<std::string> expected = linesOf(samples);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        data.add(samples[i].time, samples[i].body);
        if (i % 97 == 0) {  // also while a round is incomplete
            ASSERT_EQ(data.lines(i, 2), std::vector(1, expected[i]));
        }
    }
    EXPECT_EQ(data.size(), expected.size());
    EXPECT_EQ(data.lines(0, expected.size() + 1), expected);
    for (std::size_t first = 0; first < expected.size(); first += 1 + first / 3) {
        const std::size_t limit = std::min<std::size_t>(7, expected.size() - first);
        const auto from = expected.begin() + static_cast<std::ptrdiff_t>(first);
        EXPECT_EQ(data.lines(first, 7), std::vector(from, from + static_cast<std::ptrdiff_t>(limit)));
    }
    EXPECT_TRUE(data.lines(expected.size(), 5).empty());
});

const support::Rows<Row> jsonRows("SessionData/JsonHoldsTheSameEvents", kRows, [](const Row& row) {
    const std::vector<Sample> samples = row.samples();
    session::SessionData data;
    for (const auto& [time, text] : samples) {
        data.add(time, text);
        data.keepLast(kMost);
    }
    EXPECT_EQ(data.dropped() > 0, row.isTooMuch);
    std::string text = "{";
    data.appendJson(text);
    const auto json = nlohmann::json::parse(text + "}");
    EXPECT_EQ(text.find('<'), std::string::npos);
    const std::vector<std::string> bodies = bodiesIn(json);
    std::vector<Sample> events;
    std::set<std::size_t> used;
    std::int64_t time = json["dropped"][1];
    for (const auto& run : json["runs"]) {
        for (std::size_t round = 0; round < run[0]; ++round) {
            for (std::size_t i = 1; i < run.size(); i += 2) {
                time += run[i].get<std::int64_t>();
                events.push_back({time, bodies.at(run[i + 1])});
                used.insert(run[i + 1].get<std::size_t>());
            }
        }
    }
    ASSERT_EQ(json["dropped"][0], data.dropped());
    ASSERT_EQ(data.dropped() + events.size(), samples.size());
    EXPECT_EQ(json["events"], samples.size());
    EXPECT_EQ(used.size(), bodies.size());
    const std::vector<std::string> lines = data.lines(data.dropped(), samples.size());
    for (std::size_t i = 0; i < events.size(); ++i) {
        const Sample& sample = samples[data.dropped() + i];
        ASSERT_EQ(events[i].time, sample.time);
        ASSERT_EQ(events[i].body, sample.body);
        ASSERT_EQ(lines.at(i), linesOf({sample}).front());
    }
});

TEST(SessionDataTest, WhatATraceDoesNotHold) {
    session::SessionData data;
    data.setClock(0, 5000);
    data.add(0, body(1));
    data.addKill(500);
    data.setClock(1500, 2500);
    data.add(2000, body(1));
    EXPECT_EQ(data.marks(), "\"clock\":[[0,5000],[1500,1000]],\"kills\":[[500,1]]");
}

}  // namespace
