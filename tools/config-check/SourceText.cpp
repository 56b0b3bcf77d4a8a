#include "SourceText.h"

#include <algorithm>
#include <string_view>

namespace check {
namespace {

constexpr char32_t kReplacement = 0xFFFD;
constexpr std::size_t kExcerptWidth = 100;
constexpr std::size_t kShownBehind = 20;  // of that, at least, behind the place

constexpr bool isContinuation(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

/// Length of the character at the start of `text`, at least 1 for what is no UTF-8.
std::size_t characterLength(std::string_view text) {
    const auto lead = static_cast<unsigned char>(text.front());
    std::size_t length = 1;
    if (lead >= 0xC2U && lead <= 0xF4U) {
        length = lead >= 0xF0U ? 4 : lead >= 0xE0U ? 3 : 2;
    }
    if (length > text.size()) {
        return 1;
    }
    return std::all_of(text.begin() + 1, text.begin() + static_cast<std::ptrdiff_t>(length), isContinuation)
               ? length
               : 1;
}

/// Columns that a character of that many bytes takes in a parser that counts 16-bit units.
constexpr std::uint32_t columnsOf(std::size_t length) {
    return length == 4 ? 2 : 1;
}

std::string decoded(const std::string& bytes) {
    const auto at = [&](std::size_t i) {
        return i < bytes.size() ? static_cast<unsigned char>(bytes[i]) : -1;
    };
    const bool little = (at(0) == 0xFF && at(1) == 0xFE) || (at(0) == '<' && at(1) == 0);
    const bool big = (at(0) == 0xFE && at(1) == 0xFF) || (at(0) == 0 && at(1) == '<');
    if (!little && !big) {
        return at(0) == 0xEF && at(1) == 0xBB && at(2) == 0xBF ? bytes.substr(3) : bytes;
    }
    std::u16string wide;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        wide += static_cast<char16_t>(little ? at(i) | at(i + 1) << 8 : at(i) << 8 | at(i + 1));
    }
    const bool marked = wide.front() == 0xFEFF;
    return toUtf8(wide.data() + (marked ? 1 : 0), wide.size() - (marked ? 1 : 0));
}

}  // namespace

std::string toUtf8(const char16_t* text, std::size_t length) {
    std::string out;
    const auto put = [&](char32_t byte) { out += static_cast<char>(static_cast<unsigned char>(byte)); };
    for (std::size_t i = 0; i < length; ++i) {
        char32_t c = text[i];
        if (c >= 0xD800 && c <= 0xDFFF) {
            const bool paired = c < 0xDC00 && i + 1 < length && (text[i + 1] & 0xFC00U) == 0xDC00U;
            c = paired ? 0x10000 + ((c - 0xD800) << 10U) + (char32_t{text[++i]} - 0xDC00) : kReplacement;
        }
        if (c < 0x80) {
            put(c);
        } else if (c < 0x800) {
            put(0xC0 | c >> 6U);
            put(0x80 | (c & 0x3FU));
        } else if (c < 0x10000) {
            put(0xE0 | c >> 12U);
            put(0x80 | (c >> 6U & 0x3FU));
            put(0x80 | (c & 0x3FU));
        } else {
            put(0xF0 | c >> 18U);
            put(0x80 | (c >> 12U & 0x3FU));
            put(0x80 | (c >> 6U & 0x3FU));
            put(0x80 | (c & 0x3FU));
        }
    }
    return out;
}

SourceText::SourceText(const std::string& bytes) : text_(decoded(bytes)), lines_{0} {
    for (std::size_t i = 0; i < text_.size(); ++i) {
        if (text_[i] == '\n' || (text_[i] == '\r' && (i + 1 == text_.size() || text_[i + 1] != '\n'))) {
            lines_.push_back(i + 1);
        }
    }
}

std::vector<std::string> SourceText::excerpt(Position position, std::size_t& mark) const {
    std::vector<std::string> characters;
    mark = 0;
    if (position.line == 0 || position.line > lines_.size()) {
        return characters;
    }
    const std::size_t place = std::min(offsetOf(position), text_.size());
    std::size_t start = place;
    const auto back = [&](std::size_t limit) {
        for (mark = 0; mark < limit && start > lines_[position.line - 1];
             mark += isContinuation(text_[start]) ? 0 : 1) {
            --start;
        }
    };
    back(kExcerptWidth);
    if (mark > kExcerptWidth - kShownBehind) {
        start = place;
        back(kExcerptWidth / 2);
    }
    for (std::size_t at = start; at < text_.size() && characters.size() < kExcerptWidth;) {
        if (text_[at] == '\n' || text_[at] == '\r') {
            break;
        }
        const std::size_t length = characterLength(std::string_view(text_).substr(at));
        const auto byte = static_cast<unsigned char>(text_[at]);
        if (length == 1 && byte >= 0x80) {
            const char16_t character = byte;
            characters.push_back(toUtf8(&character, 1));
        } else {
            characters.push_back(text_.substr(at, length));
        }
        at += length;
    }
    return characters;
}

std::size_t SourceText::offsetOf(Position position) const {
    if (position.line == 0 || position.line > lines_.size()) {
        return text_.size();
    }
    if (knownPosition_.line != position.line || knownPosition_ > position) {
        knownPosition_ = {position.line, 1};
        knownOffset_ = lines_[position.line - 1];
    }
    const std::size_t end = position.line < lines_.size() ? lines_[position.line] : text_.size();
    while (knownPosition_.column < position.column && knownOffset_ < end) {
        const std::size_t length = characterLength(std::string_view(text_).substr(knownOffset_));
        knownPosition_.column += columnsOf(length);
        knownOffset_ += length;
    }
    return knownOffset_;
}

Position SourceText::positionOf(std::size_t offset) const {
    const auto next = std::upper_bound(lines_.begin(), lines_.end(), offset);
    Position position{static_cast<std::uint32_t>(next - lines_.begin()), 1};
    std::size_t at = *(next - 1);
    if (knownPosition_.line == position.line) {
        position = knownPosition_;
        at = knownOffset_;
    }
    const auto lengthAt = [&](std::size_t place) {
        return characterLength(std::string_view(text_).substr(place));
    };
    while (at < offset) {
        const std::size_t length = lengthAt(at);
        position.column += columnsOf(length);
        at += length;
    }
    while (at > offset) {
        do {
            --at;
        } while (at > offset && isContinuation(text_[at]));
        position.column -= columnsOf(lengthAt(at));
    }
    return position;
}

Position SourceText::startOfTag(Position end) const {
    const std::size_t offset = offsetOf(end);
    if (offset == 0 || offset > text_.size() || (text_[offset - 1] != '>' && text_[offset - 1] != ';')) {
        return end;
    }
    // A tag holds no second "<", not even in its attributes.
    const std::size_t start = text_.rfind(text_[offset - 1] == '>' ? '<' : '&', offset - 1);
    return start == std::string::npos ? end : positionOf(start);
}

Position SourceText::afterBlanks(Position start) const {
    const std::size_t found = text_.find_first_not_of(" \t\r\n", offsetOf(start));
    return found == std::string::npos ? start : positionOf(found);
}

}  // namespace check
