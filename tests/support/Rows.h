// Tables whose rows are tests: each has its name, its file and its line, and can be run alone.
#pragma once

#include <functional>
#include <initializer_list>
#include <string>
#include <utility>

namespace support {

/// What a row is called, and where it stands: made from the text that stands there.
class RowName final {
  public:
    RowName(const char* words, const char* where = __builtin_FILE(), int at = __builtin_LINE())
        : text(words), file(where), line(at) {}
    RowName(std::string words, const char* where, int at) : text(std::move(words)), file(where), line(at) {}

    std::string text;
    const char* file;
    int line;
};

/// A text with each `what` replaced. (Expressions are slow before main, where each test pays for all rows.)
std::string replaced(std::string text, const std::string& what, const std::string& with);

/// Makes the test SUITE.NAME, with "_" for whatever is neither letter nor digit. Before main only. Ends the
/// program when there is a test of that name.
void registerRow(const std::string& suite, const RowName& name, std::function<void()> body);

/// A table at namespace scope: `check` is run with each row in a test of its own.
template <typename Row>
class Rows final {
  public:
    Rows(const char* suite, std::initializer_list<Row> rows, void (*check)(const Row& row)) {
        for (const Row& row : rows) {
            registerRow(suite, row.name, [row, check] { check(row); });
        }
    }
};

}  // namespace support
