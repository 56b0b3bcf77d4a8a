#include "Reports.h"
#include "Rules.h"
#include "config/Encoding.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>

namespace check {
namespace {

constexpr std::size_t kNumberWidth = 5;  // of a line's number
constexpr std::size_t kValueWidth = 44;

constexpr std::size_t kExcerptWidth = 100;
constexpr std::size_t kShownBehind = 20;  // of that, at least, behind the place

/// The characters of UTF-8 in a text. A byte that is none counts as one of Latin 1.
std::vector<std::string> charactersOf(std::string_view text) {
    std::vector<std::string> characters;
    while (!text.empty()) {
        const std::size_t length = config::characterLength(text);
        characters.emplace_back(text.substr(0, std::max<std::size_t>(length, 1)));
        if (length == 0) {
            const auto byte = static_cast<unsigned char>(text.front());
            characters.back() = {static_cast<char>(0xC0U | byte >> 6U),
                                 static_cast<char>(0x80U | (byte & 0x3FU))};
        }
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return characters;
}

/// The line that a position is in, or of a long one the part around it, with a mark below the place.
void printExcerpt(std::ostream& out, std::string_view text, Position position) {
    if (position.line == 0 || position.byte > text.size()) {
        return;
    }
    // Four bytes a character are the most.
    const std::size_t start = text.substr(0, position.byte).find_last_of("\r\n") + 1;
    const std::size_t far =
        std::max(start, position.byte - std::min<std::size_t>(position.byte, 4 * kExcerptWidth));
    const std::size_t end =
        std::min({text.find_first_of("\r\n", position.byte), text.size(), position.byte + 4 * kExcerptWidth});
    std::vector<std::string> characters = charactersOf(text.substr(far, position.byte - far));
    const std::size_t most =
        characters.size() > kExcerptWidth - kShownBehind ? kExcerptWidth / 2 : kExcerptWidth;
    characters.erase(characters.begin(),
                     characters.end() - static_cast<std::ptrdiff_t>(std::min(characters.size(), most)));
    const std::size_t mark = characters.size();
    const std::vector<std::string> behind = charactersOf(text.substr(position.byte, end - position.byte));
    characters.insert(
        characters.end(), behind.begin(),
        behind.begin() + static_cast<std::ptrdiff_t>(std::min(behind.size(), kExcerptWidth - mark)));
    std::string line;
    for (const std::string& character : characters) {
        const std::string visible = shown(character == "\t" ? " " : character);
        line.append(visible, 1, visible.size() - 2);
    }
    if (line.find_first_not_of(' ') == std::string::npos) {
        return;
    }
    const std::string number = std::to_string(position.line);
    const std::size_t width = std::max(kNumberWidth, number.size());
    out << "  " << std::string(width - number.size(), ' ') << number << " | " << line << "\n  "
        << std::string(width, ' ') << " | " << std::string(mark, ' ') << "^\n";
}

void printLine(std::ostream& out, const Result& result, Position position, const char* severity,
               const std::string& text) {
    out << result.file << ":";
    if (position.line != 0) {
        out << position.line << ":" << position.column << ":";
    }
    out << " " << severity << ": " << text;
}

void printFindings(std::ostream& out, const Result& result) {
    for (const Finding& finding : result.findings.all()) {
        printLine(out, result, finding.position, finding.severity == Severity::error ? "error" : "warning",
                  finding.text);
        out << " [" << finding.kind << "]\n";
        printExcerpt(out, result.text, finding.position);
        for (const Note& note : finding.notes) {
            printLine(out, result, note.position, "note", note.text);
            out << "\n";
            if (note.position != finding.position) {
                printExcerpt(out, result.text, note.position);
            }
        }
    }
    if (result.findings.full()) {
        out << result.file << ": note: there may be more; only the first " << Findings::kMostKept
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

std::size_t widthOf(const std::string& text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char byte) {
        return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U;
    }));
}

std::string padded(const std::string& text, std::size_t width) {
    return text + std::string(width - std::min(width, widthOf(text)), ' ');
}

struct Row {
    std::string name;
    std::string value;
    std::string origin;
};

std::vector<Row> rowsOf(const std::vector<SettingInForce>& settings) {
    std::vector<Row> rows;
    for (const SettingInForce& setting : settings) {
        std::string name = setting.name;
        std::vector<Value> values = setting.values;
        if (values.empty()) {
            values.emplace_back();
        }
        for (const Value& value : values) {
            std::string origin = value.origin ? "line " + std::to_string(value.origin->line) : "default";
            if (!setting.meaning.empty()) {
                origin += " (" + setting.meaning + ")";
            }
            rows.push_back({std::exchange(name, ""), printable(value.text, setting.list), std::move(origin)});
        }
    }
    return rows;
}

void printSettings(std::ostream& out, const Result& result) {
    if (!result.accepted) {
        out << result.file << ": no settings are in force: the module refuses the file\n";
        return;
    }
    out << result.file << ": settings in force:\n";
    const std::vector<Row> rows = rowsOf(result.settings);
    std::size_t nameWidth = 0;
    std::size_t valueWidth = 0;
    for (const Row& row : rows) {
        nameWidth = std::max(nameWidth, row.name.size());
        valueWidth = std::max(valueWidth, std::min(widthOf(row.value), kValueWidth));
    }
    for (const Row& row : rows) {
        out << "  " << padded(row.name, nameWidth) << "  " << padded(row.value, valueWidth) << "  "
            << row.origin << "\n";
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
