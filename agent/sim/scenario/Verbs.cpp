#include "sim/scenario/Verbs.h"

#include "common/Difference.h"
#include "platform/agent/Logging.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <numeric>
#include <stdexcept>
#include <utility>

namespace sim {

namespace {

constexpr std::array<std::pair<std::string_view, std::uint8_t>, 6> kLevels = {{{"trace", level::kTrace},
                                                                               {"info", level::kInfo},
                                                                               {"warn", level::kWarn},
                                                                               {"error", level::kError},
                                                                               {"force", level::kForce},
                                                                               {"audit", level::kAudit}}};

constexpr unsigned int kMost = std::numeric_limits<unsigned int>::max();

std::vector<std::string> split(std::string_view text, char separator) {
    std::vector<std::string> parts;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find(separator, at), text.size());
        parts.emplace_back(text.substr(at, end - at));
        at = end + 1;
    }
    return parts;
}

bool takesRest(const std::string& kind) {
    return kind.find("...") != std::string::npos;
}

/// `fault`, or that a number is too large for what it is wanted for.
std::string numberFault(const std::string& text, bool fits, const char* fault) {
    return fits ? "" : !text.starts_with('-') && isTooLarge(text) ? "is too large" : fault;
}

std::string wholeNumberFault(const std::string& text, bool fits, const char* fault) {
    return text.find('.') == std::string::npos ? numberFault(text, fits, fault) : fault;
}

/// Why `word` is not what `kind`, of a form, asks for; empty when it is.
std::string faultOf(const Word& word, const std::string& kind) {
    const std::string& text = word.text;
    if (kind == "FILE" || kind == "CONTENTS" || kind == "OPERATION") {
        return word.isNull() || (kind == "OPERATION" && text.empty()) ? "must be a text" : "";
    }
    if (kind == "LEVEL") {
        return wholeNumberFault(text, parseLevel(text).has_value(), "is not a level");
    }
    if (kind == "COUNT") {
        return wholeNumberFault(text, parseCount(text, kMost).has_value(), "is not a whole number");
    }
    if (kind == "SECONDS") {
        return numberFault(text, parseDecimal(text).value_or(-1) >= 0, "is not a time in seconds");
    }
    if (kind == "OFFSET" || kind == "DAYS") {
        return numberFault(text, parseDecimal(text).has_value(), "is not a number");
    }
    if (kind == "[null]") {
        return word.isNull() ? "" : "can only be null";
    }
    if (takesRest(kind)) {
        return asAssignment(word) ? "" : "is not NAME=VALUE";
    }
    const std::vector<std::string> choices = split(kind, '|');
    if (choices.size() > 1 && std::find(choices.begin(), choices.end(), text) == choices.end()) {
        return "is not one of " + std::accumulate(std::next(choices.begin()), choices.end(), choices.front(),
                                                  [](const std::string& all, const std::string& each) {
                                                      return all + ", " + each;
                                                  });
    }
    return "";
}

/// The fault of the arguments; empty when there is none.
std::string faultOf(const Verb& verb, const std::vector<Word>& arguments) {
    const std::vector<std::string> kinds = split(verb.form, ' ');
    const auto needed = std::count_if(kinds.begin(), kinds.end(),
                                      [](const std::string& kind) { return !kind.starts_with('['); });
    if (arguments.size() < static_cast<std::size_t>(needed)) {
        return "too few arguments";
    }
    if (arguments.size() > kinds.size() && (kinds.empty() || !takesRest(kinds.back()))) {
        return "too many arguments";
    }
    if (!kinds.empty() && kinds.back().ends_with("|null]") && arguments.size() == kinds.size() &&
        arguments.back().isNull()) {
        return "";
    }
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string fault = faultOf(arguments[i], kinds[std::min(i, kinds.size() - 1)]);
        if (!fault.empty()) {
            return "'" + arguments[i].text + "' " + fault;
        }
    }
    return "";
}

bool isDigits(std::string_view text) {
    return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

/// A number like -12.5, whatever its size.
bool isDecimal(std::string_view text) {
    text.remove_prefix(text.starts_with('-') || text.starts_with('+') ? 1 : 0);
    const std::size_t point = std::min(text.find('.'), text.size());
    return isDigits(text.substr(0, point)) && (point == text.size() || isDigits(text.substr(point + 1)));
}

/// The verb that an unknown word was meant to be, if that can be guessed.
std::string suggestion(const std::string& first, const std::string& firstTwo) {
    constexpr std::size_t kFurthest = 2;
    const Verb* nearest = nullptr;
    std::size_t least = kFurthest + 1;
    for (const Verb& verb : verbs()) {
        const bool isTwo = verb.words.find(' ') != std::string_view::npos;
        const std::size_t away = tools::difference(isTwo ? firstTwo : first, verb.words);
        // Of a short word little is left when two letters are wrong.
        if (away < least && away * 2 < verb.words.size()) {
            nearest = &verb;
            least = away;
        }
    }
    return nearest == nullptr ? "" : "; did you mean '" + usage(*nearest) + "'?";
}

}  // namespace

std::string usage(const Verb& verb) {
    return std::string(verb.words) + (verb.form.empty() ? "" : " ") + std::string(verb.form);
}

Action parseAction(const std::vector<Word>& words) {
    const std::string first = words.front().text;
    const std::string firstTwo = words.size() < 2 ? first : first + " " + words[1].text;
    Action action;
    for (const Verb& verb : verbs()) {
        if (verb.words == firstTwo || (verb.words == first && action.verb == nullptr)) {
            action.verb = &verb;
        }
    }
    if (action.verb == nullptr) {
        throw std::runtime_error("unknown verb '" + firstTwo + "'" + suggestion(first, firstTwo));
    }
    const bool isTwo = action.verb->words != first;
    action.arguments.assign(words.begin() + (isTwo ? 2 : 1), words.end());
    action.text = joined(words);
    const std::string fault = faultOf(*action.verb, action.arguments);
    if (!fault.empty()) {
        throw std::runtime_error(fault + " (" + usage(*action.verb) + ")");
    }
    return action;
}

std::optional<std::int64_t> parseDecimal(const std::string& text) {
    constexpr double kUnit = 1'000'000;
    constexpr double kMaximum = 1'000'000'000'000;
    double value = 0;
    const char* const begin = text.data() + (text.starts_with('+') ? 1 : 0);
    if (!isDecimal(text) || std::from_chars(begin, text.data() + text.size(), value).ec != std::errc() ||
        std::abs(value) > kMaximum) {
        return std::nullopt;
    }
    return std::llround(value * kUnit);
}

std::optional<unsigned int> parseCount(const std::string& text, unsigned int maximum) {
    unsigned int value = 0;
    const char* end = text.data() + text.size();
    const auto [stopped, error] = std::from_chars(text.data(), end, value);
    if (text.empty() || error != std::errc() || stopped != end || value > maximum) {
        return std::nullopt;
    }
    return value;
}

bool isTooLarge(const std::string& text) {
    return isDecimal(text);
}

std::optional<std::uint8_t> parseLevel(const std::string& text) {
    for (const auto& [name, level] : kLevels) {
        if (name == text) {
            return level;
        }
    }
    const auto number = parseCount(text, std::numeric_limits<std::uint8_t>::max());
    return number ? std::optional(static_cast<std::uint8_t>(*number)) : std::nullopt;
}

}  // namespace sim
