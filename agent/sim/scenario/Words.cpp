#include "sim/scenario/Words.h"

#include <stdexcept>

namespace sim {

namespace {

char unescaped(char escape) {
    switch (escape) {
        case 'n':
            return '\n';
        case 't':
            return '\t';
        case '"':
        case '\\':
            return escape;
        default:
            throw std::runtime_error(std::string("unknown escape \\") + escape);
    }
}

/// Appends the quoted part that begins at `at`; answers where the line goes on behind it.
std::size_t takeQuoted(std::string_view line, std::size_t at, Word& word) {
    for (++at; at < line.size(); ++at) {
        if (line[at] == '"') {
            return at + 1;
        }
        if (line[at] == '\\' && at + 1 < line.size()) {
            word.text += unescaped(line[++at]);
        } else {
            word.text += line[at];
        }
    }
    throw std::runtime_error("quotes do not end");
}

}  // namespace

std::vector<Word> splitWords(std::string_view line) {
    constexpr std::string_view blanks = " \t\r";
    std::vector<Word> words;
    bool inWord = false;
    for (std::size_t at = 0; at < line.size() && line[at] != '#';) {
        if (blanks.find(line[at]) != std::string_view::npos) {
            inWord = false;
            ++at;
            continue;
        }
        if (!inWord) {
            words.emplace_back();
            inWord = true;
        }
        if (line[at] == '"') {
            words.back().quoted = true;
            at = takeQuoted(line, at, words.back());
        } else {
            words.back().text += line[at++];
        }
    }
    return words;
}

std::optional<Assignment> asAssignment(const Word& word) {
    const std::size_t sign = word.text.find('=');
    if (sign == std::string::npos) {
        return std::nullopt;
    }
    const std::string value = word.text.substr(sign + 1);
    const bool isNull = !word.quoted && value == "null";
    return Assignment{word.text.substr(0, sign), isNull ? std::nullopt : std::optional(value)};
}

std::string inQuotes(std::string_view text) {
    std::string word = "\"";
    for (const char c : text) {
        switch (c) {
            case '\n':
                word += "\\n";
                break;
            case '\t':
                word += "\\t";
                break;
            case '"':
            case '\\':
                word += '\\';
                [[fallthrough]];
            default:
                word += c;
        }
    }
    return word + '"';
}

std::string joined(const std::vector<Word>& words) {
    std::string text;
    for (const Word& word : words) {
        text += (text.empty() ? "" : " ") + word.text;
    }
    return text;
}

}  // namespace sim
