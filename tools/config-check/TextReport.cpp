#include "Rules.h"
#include "common/ShownText.h"

#include <algorithm>
#include <array>

namespace check {
namespace {

using logreader::continuesCharacter;

constexpr std::size_t kNumberWidth = 5;  // of a line's number
constexpr std::size_t kValueWidth = 44;
constexpr std::size_t kExcerptWidth = 100;
constexpr std::size_t kMostBefore = 50;  // of that, characters before the place

std::size_t widthOf(const std::string& text) {
    return text.size() -
           static_cast<std::size_t>(std::count_if(text.begin(), text.end(), continuesCharacter));
}

std::string padded(const std::string& text, std::size_t width) {
    return text + std::string(width - std::min(width, widthOf(text)), ' ');
}

/// The line that a position is in, or of a long one the part around it, with a mark below the place.
void printExcerpt(std::ostream& out, std::string_view text, Position position) {
    if (position.line == 0 || position.byte > text.size()) {
        return;
    }
    const std::size_t start = text.substr(0, position.byte).find_last_of("\r\n") + 1;
    std::size_t first = position.byte;
    for (std::size_t count = 0; count < kMostBefore && first > start; ++count) {
        do {
            --first;
        } while (first > start && continuesCharacter(text[first]));
    }
    std::string part(text.substr(first, position.byte - first + 4 * kExcerptWidth));
    part.resize(std::min(part.size(), part.find_first_of("\r\n")));
    std::replace(part.begin(), part.end(), '\t', ' ');
    std::string line = visible(std::string_view(part).substr(0, position.byte - first));
    const std::size_t mark = widthOf(line);
    for (std::string_view behind = std::string_view(part).substr(position.byte - first);
         !behind.empty() && widthOf(line) < kExcerptWidth;) {
        line += takeVisible(behind);
    }
    if (line.find_first_not_of(' ') == std::string::npos) {
        return;
    }
    const std::string number = std::to_string(position.line);
    const std::size_t width = std::max(kNumberWidth, number.size());
    out << "  " << std::string(width - number.size(), ' ') << number << " | " << line << "\n  "
        << std::string(width, ' ') << " | " << std::string(mark, ' ') << "^\n";
}

void printFindings(std::ostream& out, const Result& result) {
    const std::string file = visible(result.file);
    const auto printLine = [&](Position position, const char* severity, const std::string& text) {
        out << file << ":";
        if (position.line != 0) {
            out << position.line << ":" << position.column << ":";
        }
        out << " " << severity << ": " << visible(text);
    };
    for (const Finding& finding : result.findings.all()) {
        printLine(finding.position, finding.severity == Severity::error ? "error" : "warning", finding.text);
        out << " [" << finding.kind << "]\n";
        printExcerpt(out, result.text, finding.position);
        for (const Note& note : finding.notes) {
            printLine(note.position, "note", note.text);
            out << "\n";
            if (note.position != finding.position) {
                printExcerpt(out, result.text, note.position);
            }
        }
    }
    if (result.findings.full()) {
        out << file << ": note: there may be more; only the first " << Findings::kMostKept
            << " findings are shown\n";
    }
}

std::string printable(const std::string& value, bool list) {
    if (value.empty()) {
        return "none";
    }
    // Quotes where a text is not a plain word.
    const std::string text = shown(value);
    return list || value.find_first_of(" \t\n\r'\"") != std::string::npos ? text
                                                                          : text.substr(1, text.size() - 2);
}

void printSettings(std::ostream& out, const Result& result) {
    if (!result.accepted) {
        out << visible(result.file) << ": no settings are in force: the module refuses the file\n";
        return;
    }
    out << visible(result.file) << ": settings in force:\n";
    std::vector<std::array<std::string, 3>> rows;
    for (const SettingInForce& setting : result.settings) {
        const std::string meaning = setting.meaning.empty() ? "" : " (" + visible(setting.meaning) + ")";
        const std::size_t first = rows.size();
        for (const Value& value : setting.values) {
            rows.push_back(
                {rows.size() == first ? setting.name : "", printable(value.text, setting.list),
                 (value.origin ? "line " + std::to_string(value.origin->line) : "default") + meaning});
        }
        if (rows.size() == first) {
            rows.push_back({setting.name, "none", "default"});
        }
    }
    std::size_t nameWidth = 0;
    std::size_t valueWidth = 0;
    for (const auto& [name, value, origin] : rows) {
        nameWidth = std::max(nameWidth, name.size());
        valueWidth = std::max(valueWidth, std::min(widthOf(value), kValueWidth));
    }
    for (const auto& [name, value, origin] : rows) {
        out << "  " << padded(name, nameWidth) << "  " << padded(value, valueWidth) << "  " << origin << "\n";
    }
}

}  // namespace

void printText(std::ostream& out, const Result& result, bool quiet) {
    printFindings(out, result);
    if (!quiet) {
        printSettings(out, result);
    }
}

}  // namespace check
