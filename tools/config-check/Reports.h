// What is printed of the results.
#pragma once

#include "FileCheck.h"

#include <ostream>
#include <vector>

namespace check {

/// Findings as compilers print them and, unless `quiet`, the settings in force below.
void printText(std::ostream& out, const Result& result, bool quiet);
/// All of it as one JSON document.
void printJson(std::ostream& out, const std::vector<Result>& results, bool quiet);

}  // namespace check
