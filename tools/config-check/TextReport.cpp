#include "Reports.h"
#include "Rules.h"

#include <algorithm>
#include <string>
#include <utility>

namespace check {
namespace {

constexpr std::size_t kNumberWidth = 5;  // of a line's number
constexpr std::size_t kValueWidth = 44;

/// The line that a position is in, with a mark below the place.
void printExcerpt(std::ostream& out, const SourceText& source, Position position) {
    std::size_t mark = 0;
    const std::vector<std::string> characters = source.excerpt(position, mark);
    std::string line;
    for (const std::string& character : characters) {
        const std::string text = shown(character == "\t" ? " " : character);
        line.append(text, 1, text.size() - 2);
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
