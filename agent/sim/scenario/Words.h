// How a line of a scenario is cut into words.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sim {

struct Word {
    std::string text;
    bool quoted = false;  ///< a part of it stood in quotes

    /// The bare word `null`.
    bool isNull() const { return !quoted && text == "null"; }
    /// The text as an argument: null for the bare word `null`.
    const char* argument() const { return isNull() ? nullptr : text.c_str(); }
};

/// NAME=VALUE.
struct Assignment {
    std::string name;
    std::optional<std::string> value;  ///< none for a bare `null`
};

/// The words of a line, without its comment. Throws std::runtime_error for open quotes and unknown escapes.
std::vector<Word> splitWords(std::string_view line);
/// The assignment that a word stands for, or none when it has no "=".
std::optional<Assignment> asAssignment(const Word& word);
/// The text as a word in quotes, which `splitWords` reads back.
std::string inQuotes(std::string_view text);
/// The words' texts, joined by blanks.
std::string joined(const std::vector<Word>& words);

}  // namespace sim
