#include "ArchiveName.h"

#include <algorithm>
#include <charconv>

namespace logreader {

namespace {

constexpr std::string_view kEnding = ".xml";
constexpr std::string_view kCompressed = ".gz";

/// Takes the digits at the end of a text off, at most `longest`; none when there are none.
std::string_view takeDigits(std::string_view& text, std::size_t longest) {
    std::size_t begin = text.size();
    while (begin > 0 && text.size() - begin < longest && text[begin - 1] >= '0' && text[begin - 1] <= '9') {
        --begin;
    }
    const std::string_view digits = text.substr(begin);
    text.remove_suffix(digits.size());
    return digits;
}

template <typename Number>
Number valueOf(std::string_view digits) {
    Number value = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), value);
    return value;
}

/// Takes "_" and up to two digits off the end.
std::optional<unsigned> takeField(std::string_view& text) {
    const std::string_view digits = takeDigits(text, 2);
    if (digits.empty() || !text.ends_with('_')) {
        return std::nullopt;
    }
    text.remove_suffix(1);
    return valueOf<unsigned>(digits);
}

}  // namespace

std::optional<ArchiveName> readArchiveName(std::string_view name) {
    ArchiveName read;
    if (name.ends_with(kCompressed)) {
        name.remove_suffix(kCompressed.size());
    }
    read.stem = name;
    if (!name.ends_with(kEnding)) {
        return std::nullopt;
    }
    name.remove_suffix(kEnding.size());
    constexpr std::size_t kLongestCounted = 10;
    const std::string_view rest = takeDigits(name, kLongestCounted);
    if (rest.empty() || !name.ends_with('_')) {
        return std::nullopt;
    }
    name.remove_suffix(1);
    const auto minute = takeField(name);
    const auto hour = minute ? takeField(name) : std::nullopt;
    const auto day = hour ? takeField(name) : std::nullopt;
    const auto month = day ? takeField(name) : std::nullopt;
    const std::string_view year = month ? takeDigits(name, 4) : std::string_view();
    if (year.size() != 4) {
        return std::nullopt;
    }
    const auto date =
        std::chrono::year(valueOf<int>(year)) / std::chrono::month(*month) / std::chrono::day(*day);
    if (!date.ok() || *hour > 23 || *minute > 59) {
        return std::nullopt;
    }
    read.base = name;
    read.minute = std::chrono::local_days(date) + std::chrono::hours(*hour) + std::chrono::minutes(*minute);
    for (std::size_t digits = std::min<std::size_t>(rest.size(), 2); digits > 0; --digits) {
        const int second = valueOf<int>(rest.substr(0, digits));
        const std::string_view counter = rest.substr(digits);
        if (second < 60 && (digits == 1 || rest.front() != '0') && !counter.starts_with('0')) {
            read.readings[read.readingCount++] = {second, valueOf<std::uint32_t>(counter)};
        }
    }
    return read.readingCount == 0 ? std::nullopt : std::optional(read);
}

}  // namespace logreader
