#include "detection/TextSearch.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <exception>

namespace {

constexpr std::size_t kEndingSize = sizeof(std::uint32_t);
constexpr unsigned int kPlacesPerText = 16;     // so few places are taken by others' endings
constexpr std::size_t kComparisonsPerText = 8;  // all together take no longer than one search for the text

std::uint32_t bytesAt(const char* place) noexcept {
    std::uint32_t bytes = 0;
    std::memcpy(&bytes, place, sizeof bytes);
    return bytes;
}

}  // namespace

TextSearch::TextSearch(std::span<const std::string> texts) noexcept : texts_(texts) {
    if (texts.size() < kLongList) {
        return;
    }
    try {
        prepare();
    } catch (const std::exception&) {
        endings_.clear();
    }
}

void TextSearch::prepare() {
    const std::size_t places = std::bit_ceil(texts_.size() * kPlacesPerText);
    shift_ = 32U - static_cast<unsigned int>(std::bit_width(places) - 1);
    filter_.resize(places);
    for (const std::string& text : texts_) {
        if (text.size() < kEndingSize) {
            short_.push_back(&text);
            continue;
        }
        const std::uint32_t bytes = bytesAt(text.data() + text.size() - kEndingSize);
        endings_.push_back({bytes, &text});
        filter_[placeOf(bytes)] = true;
    }
    std::sort(endings_.begin(), endings_.end(),
              [](const Ending& left, const Ending& right) { return left.bytes < right.bytes; });
}

std::size_t TextSearch::placeOf(std::uint32_t bytes) const noexcept {
    constexpr std::uint32_t spread = 0x9E3779B1;  // close to the golden ratio's share of all numbers
    return (bytes * spread) >> shift_;
}

bool TextSearch::occursIn(const char* message) const noexcept {
    if (endings_.empty()) {
        return oneByOne(message);
    }
    for (const std::string* text : short_) {
        if (std::strstr(message, text->c_str()) != nullptr) {
            return true;
        }
    }
    const std::size_t length = std::strlen(message);
    std::size_t comparisonsLeft = endings_.size() * kComparisonsPerText;
    for (std::size_t end = kEndingSize; end <= length; ++end) {
        const std::uint32_t bytes = bytesAt(message + end - kEndingSize);
        if (!filter_[placeOf(bytes)]) {
            continue;
        }
        auto ending =
            std::lower_bound(endings_.begin(), endings_.end(), bytes,
                             [](const Ending& one, std::uint32_t value) { return one.bytes < value; });
        for (; ending != endings_.end() && ending->bytes == bytes; ++ending) {
            if (comparisonsLeft-- == 0) {
                return oneByOne(message);
            }
            const std::string& text = *ending->text;
            if (text.size() <= end &&
                std::memcmp(message + end - text.size(), text.data(), text.size()) == 0) {
                return true;
            }
        }
    }
    return false;
}

bool TextSearch::oneByOne(const char* message) const noexcept {
    return std::any_of(texts_.begin(), texts_.end(), [message](const std::string& text) {
        return std::strstr(message, text.c_str()) != nullptr;
    });
}
