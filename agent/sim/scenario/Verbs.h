// What a scenario can ask for.
#pragma once

#include "sim/scenario/Words.h"
#include "sim/time/Clock.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sim {

class SimulatedAgent;
struct Action;

/// One thing that can be asked for.
struct Verb {
    std::string_view words;
    /// The arguments as a person is told of them, which says what they may be:
    /// - FILE, CONTENTS: a text; OPERATION: one that is not empty; LEVEL: a level by number or name;
    ///   COUNT: a whole number; SECONDS: none below zero; OFFSET, DAYS: any number; A|B: one of these words
    /// - anything else: a text or null
    /// - [X]: may be left out; [null]: nothing but null; [NAME=VALUE...]: any number of them;
    ///   with |null: or null instead
    std::string_view form;
    std::string_view about;
    void (*perform)(SimulatedAgent& agent, const Action& action);  ///< null: the scenario ends
};

/// All verbs; of two that begin alike, the one with more words is meant if it fits.
const std::vector<Verb>& verbs();
/// A verb and its form, as it is typed.
std::string usage(const Verb& verb);

/// A verb and its arguments, found to fit each other.
struct Action {
    const Verb* verb = nullptr;
    std::vector<Word> arguments;
    std::string text;    ///< the words as they stood, unquoted
    Instant time{0};     ///< when it is due
    std::string source;  ///< the file
    int line = 0;

    bool isEnd() const { return verb->perform == nullptr; }
    /// The text of an argument; null for a null, and for one that is left out.
    const char* argument(std::size_t index) const {
        return index < arguments.size() ? arguments[index].argument() : nullptr;
    }
    /// The text of an argument that is there.
    const std::string& word(std::size_t index) const { return arguments.at(index).text; }
};

/// The action in `words`, without time and place. Throws std::runtime_error saying why when there is none.
Action parseAction(const std::vector<Word>& words);

/// A number of seconds or days, with an optional sign and fraction, in millionths of its unit; else none.
std::optional<std::int64_t> parseDecimal(const std::string& text);
/// A whole number from 0 to `maximum`.
std::optional<unsigned int> parseCount(const std::string& text, unsigned int maximum);
/// Whether a text that is refused as a number is one, but out of its range.
bool isTooLarge(const std::string& text);
/// A level by number or name.
std::optional<std::uint8_t> parseLevel(const std::string& text);

}  // namespace sim
