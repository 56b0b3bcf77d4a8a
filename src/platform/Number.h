#pragma once

#include <cstdint>
#include <string_view>

namespace platform {

/// A text read as a number the way `atoi` reads it: leading blanks skipped, an optional sign, digits up to
/// the first other character; no digits give 0. Values beyond 32 bits stay at the limit.
std::int32_t readNumber(std::string_view text) noexcept;

}  // namespace platform
