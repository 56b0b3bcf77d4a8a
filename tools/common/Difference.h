// How far a word is from the one that was meant.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tools {

/// In small letters.
std::string lowered(std::string_view given);
/// Letters changed, left out, added or swapped between two texts, letter case aside.
std::size_t difference(std::string_view one, std::string_view other);

}  // namespace tools
