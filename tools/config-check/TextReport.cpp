#include "Reports.h"
#include "Rules.h"

#include <algorithm>
#include <iomanip>
#include <string>
#include <utility>

namespace check {
namespace {

constexpr std::size_t kExcerptWidth = 100;
constexpr std::size_t kValueWidth = 44;

/// The line that a position is in, with a mark below the place.
void printExcerpt(std::ostream& out, const SourceText& source, Position position) {
    const std::string_view line = source.line(position.line);
    if (line.find_first_not_of(" \t") == std::string_view::npos) {
        return;
    }
    // Characters, not bytes: one column each. A long line is shown around the place.
    std::vector<std::string> characters;
    const std::size_t column = position.column == 0 ? 0 : position.column - 1;
    const std::size_t first = column > kExcerptWidth - 20 ? column - kExcerptWidth / 2 : 0;
    std::size_t count = 0;
    for (const char byte : line) {
        if ((static_cast<unsigned char>(byte) & 0xC0U) != 0x80U) {
            if (++count > first + kExcerptWidth) {
                break;
            }
            if (count > first) {
                characters.emplace_back();
            }
        }
        if (!characters.empty()) {
            characters.back() += byte;
        }
    }
    const std::string number = std::to_string(position.line);
    const std::string margin =
        "  " + std::string(std::max<std::size_t>(5, number.size()) - number.size(), ' ');
    out << margin << number << " | ";
    for (const std::string& character : characters) {
        const std::string text = shown(character == "\t" ? " " : character);
        out << text.substr(1, text.size() - 2);
    }
    out << "\n  " << std::string(std::max<std::size_t>(5, number.size()), ' ') << " | "
        << std::string(column - first, ' ') << "^\n";
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
        printExcerpt(out, result.source, finding.position);
        for (const Note& note : finding.notes) {
            printLine(out, result, note.position, "note", note.text);
            out << "\n";
            if (note.position != finding.position) {
                printExcerpt(out, result.source, note.position);
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
        valueWidth = std::max(valueWidth, std::min(row.value.size(), kValueWidth));
    }
    for (const Row& row : rows) {
        out << "  " << std::left << std::setw(static_cast<int>(nameWidth)) << row.name << "  "
            << std::setw(static_cast<int>(valueWidth)) << row.value << "  " << row.origin << "\n";
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
