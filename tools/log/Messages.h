#pragma once

#include <cstdio>
#include <string>
#include <string_view>

namespace logreader {

/// Says on standard error what went wrong. Names and quoted texts may hold anything: control characters are shown as
/// signs.
void complain(std::string_view text);

/// Writes all of a text and hands it on. Throws std::runtime_error when that cannot be done.
void writeOut(std::string_view text, std::FILE* output);

/// A text in one line in which a terminal finds nothing to act upon.
std::string shownInLine(std::string_view text);

}  // namespace logreader
