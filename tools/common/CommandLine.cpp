#include "common/CommandLine.h"

#include <algorithm>

#include <getopt.h>

namespace tools {

namespace {

constexpr int kWritten = 2 * kLong;  // and the row's number: the option was written in its long form

/// What getopt has just refused: a short option by its letter, wherever in a word that stands, a long one as it was written.
std::string wrongOption(bool valueIsMissing, char** words) {
    const bool isShort = ::optopt > 0 && ::optopt < kLong;
    const std::string name = isShort ? std::string("-") + static_cast<char>(::optopt) : words[::optind - 1];
    return (valueIsMissing             ? "no value for option "
            : isShort || ::optopt == 0 ? "unknown option "
                                       : "no value belongs to option ") +
           name;
}

}  // namespace

CommandLine::CommandLine(int count, char** given, std::vector<OptionRow> rows) {
    rows.insert(rows.end(), {{"help", 'h', ""}, {"version", 'V', ""}});
    std::string letters = ":";
    std::vector<option> known;
    for (const OptionRow& row : rows) {
        const bool takesValue = row.value == nullptr;
        known.push_back({row.name, takesValue ? required_argument : no_argument, nullptr,
                         kWritten + static_cast<int>(known.size())});
        if (row.letter < kLong && letters.find(static_cast<char>(row.letter)) == std::string::npos) {
            letters += static_cast<char>(row.letter);
            letters += takesValue ? ":" : "";
        }
    }
    known.push_back({nullptr, 0, nullptr, 0});
    ::optind = 0;  // anew, also in a process that has read another command line
    ::opterr = 0;
    for (int found = 0;
         (found = ::getopt_long(count, given, letters.c_str(), known.data(), nullptr)) != -1;) {
        if (found == ':' || found == '?') {
            throw UsageError(wrongOption(found == ':', given));
        }
        const auto row = found >= kWritten ? rows.begin() + (found - kWritten)
                                           : std::find_if(rows.begin(), rows.end(), [found](const auto& one) {
                                                 return one.letter == found;
                                             });
        values[row->letter] = row->value == nullptr ? ::optarg : row->value;
        if (row->letter == 'h' || row->letter == 'V') {
            return;
        }
    }
    words.assign(given + ::optind, given + count);
}

}  // namespace tools
