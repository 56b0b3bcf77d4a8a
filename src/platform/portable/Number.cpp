#include "platform/portable/Number.h"

#include <charconv>
#include <limits>

namespace platform {

std::int32_t readNumber(std::string_view text) noexcept {
    const auto start = text.find_first_not_of(" \t\n\v\f\r");
    if (start == std::string_view::npos) {
        return 0;
    }
    text.remove_prefix(start);
    const bool negative = text.front() == '-';
    if (negative || text.front() == '+') {
        text.remove_prefix(1);
    }
    if (text.starts_with('-')) {
        return 0;  // a second sign, which from_chars would take
    }
    std::int32_t value = 0;
    // from_chars leaves the value alone when it does not fit.
    if (std::from_chars(text.data(), text.data() + text.size(), value).ec == std::errc::result_out_of_range) {
        return negative ? std::numeric_limits<std::int32_t>::min() : std::numeric_limits<std::int32_t>::max();
    }
    return negative ? -value : value;
}

std::int32_t readNumber(std::string_view text, std::size_t position, std::size_t length) noexcept {
    return position < text.size() ? readNumber(text.substr(position, length)) : 0;
}

}  // namespace platform
