// JSON that lies in a script element of a page.
#pragma once

#include <string>
#include <string_view>

namespace session {

/// JSON without any "<", which can only stand in its strings: whatever these hold, they end no element.
std::string scriptSafe(std::string_view json);
/// A text as such a JSON string, in quotes.
std::string asScriptText(std::string_view text);

}  // namespace session
