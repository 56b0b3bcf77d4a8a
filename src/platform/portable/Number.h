#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace platform {

/// A text read as a number the way `atoi` reads it: leading blanks skipped, an optional sign, digits up to
/// the first other character; no digits give 0. Values beyond 32 bits stay at the limit.
std::int32_t readNumber(std::string_view text) noexcept;
/// Likewise of the `length` characters from `position` on alone; 0 when the text ends before.
std::int32_t readNumber(std::string_view text, std::size_t position, std::size_t length) noexcept;

/// Such a number is 1 or more.
inline bool isPositive(const char* text) noexcept {
    return readNumber(text) >= 1;
}

}  // namespace platform
