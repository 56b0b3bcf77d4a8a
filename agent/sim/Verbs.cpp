#include "Verbs.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace sim {

namespace {

/// What an argument may be. `optional...` may be missing; `assignments` takes all words that are left.
enum class Kind : std::uint8_t {
    text,
    path,
    name,
    level,
    count,
    decimal,
    duration,
    onOff,
    threadDestroy,
    optionalText,
    optionalNull,
    assignments,
    properties
};

struct Rule {
    std::string_view words;
    Verb verb;
    std::vector<Kind> arguments;
};

const std::vector<Rule>& rules() {
    static const std::vector<Rule> all = {
        {"start data-source", Verb::startDataSource, {Kind::text}},
        {"start rsm", Verb::startRsm, {Kind::text}},
        {"start logger", Verb::startLogger, {Kind::text}},
        {"start web-service", Verb::startWebService, {}},
        {"stop data-source", Verb::stopDataSource, {}},
        {"stop rsm", Verb::stopRsm, {Kind::optionalNull}},
        {"stop logger", Verb::stopLogger, {}},
        {"stop web-service", Verb::stopWebService, {Kind::optionalNull}},
        {"service create", Verb::serviceCreate, {}},
        {"service destroy", Verb::serviceDestroy, {}},
        {"connect", Verb::connect, {Kind::text, Kind::text}},
        {"disconnect", Verb::disconnect, {Kind::optionalText}},
        {"call", Verb::call, {Kind::name, Kind::assignments}},
        {"command", Verb::command, {Kind::text, Kind::properties}},
        {"log", Verb::log, {Kind::level, Kind::text}},
        {"audit", Verb::audit, {Kind::text}},
        {"asset present", Verb::assetPresent, {}},
        {"asset absent", Verb::assetAbsent, {}},
        {"enterprise accept", Verb::enterpriseAccept, {}},
        {"enterprise refuse", Verb::enterpriseRefuse, {}},
        {"enterprise delay", Verb::enterpriseDelay, {Kind::duration}},
        {"enterprise thread", Verb::enterpriseThread, {Kind::onOff}},
        {"poll-interval", Verb::pollInterval, {Kind::count}},
        {"fail thread-construct", Verb::failThreadConstruct, {}},
        {"fail thread-start", Verb::failThreadStart, {}},
        {"route on", Verb::routeOn, {}},
        {"route off", Verb::routeOff, {}},
        {"log-lock", Verb::logLock, {Kind::onOff}},
        {"thread-destroy", Verb::threadDestroy, {Kind::threadDestroy}},
        {"write", Verb::write, {Kind::path, Kind::path}},
        {"remove", Verb::remove, {Kind::path}},
        {"age", Verb::age, {Kind::path, Kind::decimal}},
        {"show", Verb::show, {Kind::path}},
        {"clock-step", Verb::clockStep, {Kind::decimal}},
        {"unload", Verb::unload, {}},
        {"end", Verb::end, {}},
    };
    return all;
}

constexpr std::array<std::pair<std::string_view, std::uint8_t>, 6> kLevels = {
    {{"trace", 20}, {"info", 30}, {"warn", 40}, {"error", 50}, {"force", 250}, {"audit", 254}}};

constexpr std::array<std::pair<std::string_view, agent::ThreadDestroy>, 4> kThreadDestroys = {
    {{"sleep", agent::ThreadDestroy::sleep},
     {"anywhere", agent::ThreadDestroy::anywhere},
     {"unwind", agent::ThreadDestroy::unwind},
     {"leave", agent::ThreadDestroy::leave}}};

bool takesRest(Kind kind) {
    return kind == Kind::assignments || kind == Kind::properties;
}

bool maybeMissing(Kind kind) {
    return kind == Kind::optionalText || kind == Kind::optionalNull || takesRest(kind);
}

/// Why `word` is not what `kind` asks for; empty when it is.
std::string faultOf(const Word& word, Kind kind) {
    switch (kind) {
        case Kind::path:
        case Kind::name:
            return word.isNull() || (kind == Kind::name && word.text.empty()) ? "must be a text" : "";
        case Kind::level:
            return parseLevel(word.text) ? "" : "is no level";
        case Kind::count:
            return parseCount(word.text, std::numeric_limits<unsigned int>::max()) ? ""
                                                                                   : "is no whole number";
        case Kind::decimal:
            return parseDecimal(word.text) ? "" : "is no number";
        case Kind::duration:
            return parseDecimal(word.text).value_or(-1) >= 0 ? "" : "is no time in seconds";
        case Kind::onOff:
            return parseOnOff(word.text) ? "" : "is neither on nor off";
        case Kind::threadDestroy:
            return parseThreadDestroy(word.text) ? "" : "is none of sleep, anywhere, unwind, leave";
        case Kind::optionalNull:
            return word.isNull() ? "" : "can only be null";
        case Kind::assignments:
        case Kind::properties:
            return asAssignment(word) ? "" : "is not NAME=VALUE";
        case Kind::text:
        case Kind::optionalText:
            break;
    }
    return "";
}

void check(const Rule& rule, const std::vector<Word>& arguments) {
    const std::string verb(rule.words);
    const auto& kinds = rule.arguments;
    const auto needed =
        std::count_if(kinds.begin(), kinds.end(), [](Kind kind) { return !maybeMissing(kind); });
    const bool open = !kinds.empty() && takesRest(kinds.back());
    if (arguments.size() < static_cast<std::size_t>(needed)) {
        throw std::runtime_error("too few arguments for '" + verb + "'");
    }
    if (arguments.size() > kinds.size() && !open) {
        throw std::runtime_error("too many arguments for '" + verb + "'");
    }
    // A bare null in place of all properties.
    if (!kinds.empty() && kinds.back() == Kind::properties && arguments.size() == kinds.size() &&
        arguments.back().isNull()) {
        return;
    }
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string fault = faultOf(arguments[i], kinds[std::min(i, kinds.size() - 1)]);
        if (!fault.empty()) {
            throw std::runtime_error("'" + arguments[i].text + "' " + fault);
        }
    }
}

}  // namespace

Action parseAction(const std::vector<Word>& words) {
    const std::string first = words.front().text;
    const std::string firstTwo = words.size() < 2 ? first : first + " " + words[1].text;
    for (const Rule& rule : rules()) {
        const bool isTwo = rule.words == firstTwo && words.size() > 1 && rule.words != first;
        if (rule.words != first && !isTwo) {
            continue;
        }
        Action action;
        action.verb = rule.verb;
        action.arguments.assign(words.begin() + (isTwo ? 2 : 1), words.end());
        action.text = joined(words);
        check(rule, action.arguments);
        return action;
    }
    throw std::runtime_error("unknown verb '" + firstTwo + "'");
}

std::optional<std::int64_t> parseDecimal(const std::string& text) {
    constexpr std::int64_t unit = 1'000'000;
    constexpr std::int64_t maximum = 1'000'000'000'000;
    const bool negative = text.starts_with('-');
    const std::size_t start = negative || text.starts_with('+') ? 1 : 0;
    const std::size_t point = std::min(text.find('.'), text.size());
    const std::string whole = text.substr(start, point - start);
    const std::string fraction = point < text.size() ? text.substr(point + 1) : "0";
    const auto isDigits = [](const std::string& part) {
        return !part.empty() && part.find_first_not_of("0123456789") == std::string::npos;
    };
    if (!isDigits(whole) || !isDigits(fraction) || whole.size() > 12) {
        return std::nullopt;
    }
    const std::int64_t value = std::stoll(whole);
    if (value > maximum) {
        return std::nullopt;
    }
    const std::int64_t millionths = value * unit + std::stoll((fraction + "000000").substr(0, 6));
    return negative ? -millionths : millionths;
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

std::optional<bool> parseOnOff(const std::string& text) {
    return text == "on" || text == "off" ? std::optional(text == "on") : std::nullopt;
}

std::optional<agent::ThreadDestroy> parseThreadDestroy(const std::string& text) {
    for (const auto& [name, how] : kThreadDestroys) {
        if (name == text) {
            return how;
        }
    }
    return std::nullopt;
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
