// The check of one configuration file, from its path to its output.
#pragma once

#include "Finding.h"

#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace check {

struct Value {
    std::string text;
    std::optional<Position> origin;  ///< none: the default
};

/// One setting in force.
struct SettingInForce {
    std::string name;
    std::vector<Value> values;  ///< one, but for a list
    bool list = false;
    std::string meaning;  ///< what the value says, where that is not plain; may be empty
};

struct Result {
    std::string file;
    std::string unreadable;  ///< why the file could not be read; empty when it was
    bool accepted = false;   ///< by the module
    std::string text;        ///< of the file, in UTF-8
    Findings findings;
    std::vector<SettingInForce> settings;  ///< none when the module refuses the file
};

/// Checks one file. `schedule`: the schedule file's path as a host gives it, when that is to be looked at, too.
Result checkFile(const std::string& file, const std::optional<std::string>& schedule);

/// Findings as compilers print them and, unless `quiet`, the settings in force below.
void printText(std::ostream& out, const Result& result, bool quiet);
/// All of it as one JSON document.
void printJson(std::ostream& out, const std::vector<Result>& results, bool quiet);

}  // namespace check
