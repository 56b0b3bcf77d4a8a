// Message texts in a form that is safe to show: whatever bytes a message has, a terminal or a JSON reader
// gets nothing that it would act upon.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace logreader {

/// Appends a text for the terminal: bytes that are not UTF-8 and control characters as `\x1b`, characters that
/// change the direction of writing or end a line as `\u202e`. Line ends stay, with `indent` behind each.
void appendShown(std::string& target, std::string_view text, std::string_view indent);

/// Appends a text as a JSON string. Bytes that are not UTF-8 stand as `\u00XX`, and so do control characters.
void appendJson(std::string& target, std::string_view text);
/// The same with everything that JSON lets stand as it is, as in a trace.
std::string jsonText(std::string_view text);
/// JSON for a script element of a page: without any "<", which can only stand in its strings, so whatever these hold,
/// they end no element.
std::string scriptSafe(std::string_view json);
/// A text as such JSON.
std::string scriptText(std::string_view text);

/// Whether the byte is none that begins a character of UTF-8.
constexpr bool continuesCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

}  // namespace logreader

namespace tools {

/// Milliseconds as seconds with three decimals.
std::string secondsText(std::int64_t milliseconds);

}  // namespace tools
