#pragma once

#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace tools {

/// A command line that means nothing.
class UsageError final : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// An option as it may be written. Those that mean the same have the same letter.
struct OptionRow {
    const char* name;             ///< in its long form
    int letter;                   ///< its short form, unless it is one of those from `kLong` on
    const char* value = nullptr;  ///< what it stands for; null: a value follows
};
constexpr int kLong = 256;

/// What was given: the last value of each letter, and the words that are no options.
struct CommandLine {
    /// `rows`: the options beside --help ('h') and --version ('V'), which every program has, and with the first of which the
    /// reading ends, whatever follows. Throws UsageError.
    CommandLine(int count, char** given, std::vector<OptionRow> rows);

    bool has(int letter) const { return values.contains(letter); }
    std::optional<std::string> value(int letter) const {
        const auto found = values.find(letter);
        return found == values.end() ? std::nullopt : std::optional(found->second);
    }

    std::map<int, std::string> values;
    std::vector<std::string> words;
};

}  // namespace tools
