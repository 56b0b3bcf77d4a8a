#pragma once

#include <string>
#include <string_view>

namespace logreader {

/// Says on standard error what went wrong. Names and quoted texts may hold anything: control characters are shown as
/// signs.
void complain(std::string_view text);

/// A text in one line in which a terminal finds nothing to act upon.
std::string shownInLine(std::string_view text);

}  // namespace logreader
