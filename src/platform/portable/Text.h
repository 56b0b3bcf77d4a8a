#pragma once

#include <algorithm>
#include <string_view>

namespace platform {

/// The text without the blanks and tabs at both ends; line breaks stay.
inline std::string_view trimmed(std::string_view text) noexcept {
    text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
    return text.substr(0, text.find_last_not_of(" \t") + 1);
}

}  // namespace platform
