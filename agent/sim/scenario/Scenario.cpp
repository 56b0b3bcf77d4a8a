#include "sim/scenario/Scenario.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <stdexcept>

namespace sim {

namespace {

/// A time like "2026-03-01T10:00:00Z", since 1970. Throws std::runtime_error for anything else.
std::chrono::seconds parseClock(const std::string& text) {
    int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0, length = 0;
    std::sscanf(text.c_str(), "%4d-%2d-%2dT%2d:%2d:%2dZ%n", &year, &month, &day, &hour, &minute, &second,
                &length);
    const auto date = std::chrono::year(year) / month / day;
    const auto time = std::chrono::hours(hour) + std::chrono::minutes(minute) + std::chrono::seconds(second);
    const bool isTime = hour >= 0 && hour < 24 && minute >= 0 && minute < 60 && second >= 0 && second < 60;
    if (length == 0 || static_cast<std::size_t>(length) != text.size() || !date.ok() || !isTime ||
        date < std::chrono::year(1970) / 1 / 1) {
        throw std::runtime_error("'" + text + "' is not a time like 2026-03-01T10:00:00Z");
    }
    return std::chrono::sys_days(date).time_since_epoch() + time;
}

/// Ten years: a longer scenario is a slip of the pen.
constexpr Instant kLongest = std::chrono::hours(24 * 365 * 10);
/// What some editors put before the first line.
constexpr std::string_view kByteOrderMark = "\xef\xbb\xbf";

Instant parseTime(const std::string& text, Instant previous) {
    const bool relative = text.starts_with('+');
    const auto parsed = parseDecimal(text);
    if (!parsed || *parsed < 0 || Instant(*parsed) > kLongest) {
        const bool tooLarge = !text.starts_with('-') && isTooLarge(text);
        throw std::runtime_error("'" + text + (tooLarge ? "' is too large" : "' is not a time in seconds"));
    }
    const Instant time = Instant(*parsed) + (relative ? previous : Instant(0));
    if (time < previous) {
        throw std::runtime_error("time " + text + " lies before the line above");
    }
    return time;
}

void readLine(const std::vector<Word>& words, Scenario& scenario) {
    if (words.front().text == "clock") {
        if (words.size() != 2) {
            throw std::runtime_error("'clock' takes one argument");
        }
        if (scenario.clock || !scenario.actions.empty()) {
            throw std::runtime_error("'clock' is allowed once, before the first action");
        }
        scenario.clock = parseClock(words[1].text);
        return;
    }
    const Instant previous = scenario.actions.empty() ? Instant(0) : scenario.actions.back().time;
    const Instant time = parseTime(words.front().text, previous);
    if (words.size() == 1) {
        throw std::runtime_error("a time without a verb");
    }
    Action action = parseAction({words.begin() + 1, words.end()});
    action.time = time;
    scenario.actions.push_back(std::move(action));
}

}  // namespace

std::string located(const std::string& file, int line, const std::string& reason) {
    return file + ":" + std::to_string(line) + ": " + reason;
}

Scenario readScenario(std::istream& stream, const std::string& file) {
    Scenario scenario;
    std::string text;
    for (int line = 1; std::getline(stream, text); ++line) {
        try {
            if (line == 1 && text.starts_with(kByteOrderMark)) {
                text.erase(0, kByteOrderMark.size());
            }
            const std::vector<Word> words = splitWords(text);
            if (words.empty()) {
                continue;
            }
            const std::size_t before = scenario.actions.size();
            readLine(words, scenario);
            if (scenario.actions.size() > before) {
                scenario.actions.back().source = file;
                scenario.actions.back().line = line;
            }
        } catch (const std::runtime_error& error) {
            throw std::runtime_error(located(file, line, error.what()));
        }
    }
    return scenario;
}

Scenario readScenarioFile(const std::string& file) {
    std::ifstream stream(file);
    if (!stream) {
        throw std::runtime_error(file + ": " + std::strerror(errno));
    }
    Scenario scenario = readScenario(stream, file);
    if (stream.bad()) {
        throw std::runtime_error(file + ": cannot be read");
    }
    return scenario;
}

std::string leadingComment(const std::string& file) {
    std::ifstream stream(file);
    std::string comment;
    for (std::string line; std::getline(stream, line) && line.starts_with('#');) {
        const std::size_t start = std::min(line.find_first_not_of("# "), line.size());
        comment.append(comment.empty() ? "" : " ").append(line, start);
    }
    return comment;
}

}  // namespace sim
