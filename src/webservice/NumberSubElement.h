#pragma once

#include <cstdint>

namespace KRX::Services::ZephanServicesNS {

/// A number as the library takes it: a new character array with its decimal text, the release flag set. Null,
/// with the flag cleared, when memory runs out.
const char* newNumberText(std::int32_t number, bool& release) noexcept;

/// A received text as a number; a null text counts as 0.
std::int32_t numberOf(const char* text) noexcept;

}  // namespace KRX::Services::ZephanServicesNS
