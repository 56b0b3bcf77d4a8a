// The encodings of configuration files.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace config {

struct DecodingFailure {
    std::string reason;
    std::size_t byte;  ///< where it failed, counted in what was to be decoded
};

/// Turns the bytes of an XML document into UTF-8 without a byte order mark, by that mark or by the encoding that the
/// document declares. Text that is UTF-8 already is left unchanged, well-formed or not.
std::optional<DecodingFailure> decode(std::string& bytes);

/// How many bytes the character at the start of a text in UTF-8 has; 0 when there is none.
std::size_t characterLength(std::string_view text);

}  // namespace config
