#include "config/Encoding.h"

#include "config/OneByteEncodings.h"
#include "platform/TextDecoder.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>
#include <string_view>
#include <utility>

namespace config {
namespace {

constexpr char16_t kNothing = 0xFFFD;
constexpr std::size_t kHalf = 0x80;
constexpr std::size_t kAll = 0x100;

std::uint8_t byteOf(std::string_view text, std::size_t at) noexcept {
    return static_cast<std::uint8_t>(text[at]);
}

void append(std::string& utf8, char32_t c) {
    const auto put = [&](char32_t byte) { utf8 += static_cast<char>(static_cast<unsigned char>(byte)); };
    if (c < 0x80) {
        put(c);
        return;
    }
    // The first byte says by its upper bits how many follow, each of which has six bits of the character.
    unsigned int shift = c < 0x800 ? 6 : c < 0x10000 ? 12 : 18;
    put((shift == 6 ? 0xC0U : shift == 12 ? 0xE0U : 0xF0U) | c >> shift);
    while (shift > 0) {
        shift -= 6;
        put(0x80U | (c >> shift & 0x3FU));
    }
}

std::string capitals(std::string name) {
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return name;
}

/// The name of the encoding in an XML declaration; empty when there is none.
std::string declaredEncoding(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n";
    constexpr std::string_view keyword = "encoding";
    if (!text.starts_with("<?xml")) {
        return {};
    }
    text = text.substr(0, text.find("?>"));
    std::size_t at = text.find(keyword);
    at = at == std::string_view::npos ? at : text.find_first_not_of(blanks, at + keyword.size());
    if (at == std::string_view::npos || text[at] != '=') {
        return {};
    }
    at = text.find_first_not_of(blanks, at + 1);
    if (at == std::string_view::npos || (text[at] != '"' && text[at] != '\'')) {
        return {};
    }
    return std::string(text.substr(at + 1, text.find(text[at], at + 1) - at - 1));
}

std::optional<DecodingFailure> decodeUtf16(std::string& bytes, bool isLittle) {
    std::string utf8;
    const auto unit = [&](std::size_t at) {
        const unsigned int first = byteOf(bytes, at);
        const unsigned int second = byteOf(bytes, at + 1);
        return static_cast<char32_t>(isLittle ? first | second << 8U : first << 8U | second);
    };
    const auto isSurrogate = [](char32_t c, char32_t kind) { return (c & 0xFC00U) == kind; };
    for (std::size_t i = 0; i < bytes.size(); i += 2) {
        if (i + 1 == bytes.size()) {
            return DecodingFailure{"half a character", i};
        }
        char32_t c = unit(i);
        if (isSurrogate(c, 0xD800) && i + 3 < bytes.size() && isSurrogate(unit(i + 2), 0xDC00)) {
            c = 0x10000 + ((c - 0xD800) << 10U) + (unit(i + 2) - 0xDC00);
            i += 2;
        } else if (isSurrogate(c, 0xD800) || isSurrogate(c, 0xDC00)) {
            return DecodingFailure{"half a character", i};
        }
        if (c != 0xFEFF || i > 0) {
            append(utf8, c);
        }
    }
    bytes = std::move(utf8);
    const std::string declared = declaredEncoding(bytes);
    const std::string name = capitals(declared);
    if (name.empty() || name == "UTF-16" || name == "ISO-10646-UCS-2" ||
        name == (isLittle ? "UTF-16LE" : "UTF-16BE")) {
        return std::nullopt;
    }
    return DecodingFailure{"the encoding '" + declared + "' is declared, and this is UTF-16", 0};
}

/// What each byte stands for by itself; empty texts are no characters.
using Characters = std::array<std::string, kAll>;

/// The usual name of an encoding that goes by others, too.
std::string canonical(const std::string& name) {
    if (name == "ASCII" || name == "LATIN1") {
        return name == "ASCII" ? "US-ASCII" : "ISO-8859-1";
    }
    for (const auto& [other, usual] :
         {std::pair("ISO_8859-", "ISO-8859-"), {"ISO8859-", "ISO-8859-"}, {"CP125", "WINDOWS-125"}}) {
        if (name.starts_with(other)) {
            return usual + name.substr(std::string_view(other).size());
        }
    }
    return name;
}

/// Those of an encoding that is known here.
bool fillFromTables(const std::string& name, Characters& characters) {
    const auto* const found = std::find_if(std::begin(kOneByteEncodings), std::end(kOneByteEncodings),
                                           [&](const OneByteEncoding& one) { return one.name == name; });
    const bool isAscii = name == "US-ASCII";
    if (!isAscii && name != "ISO-8859-1" && found == std::end(kOneByteEncodings)) {
        return false;
    }
    const std::u16string_view upper =
        found == std::end(kOneByteEncodings) ? std::u16string_view() : found->upper;
    for (std::size_t byte = 0; byte < (isAscii ? kHalf : kAll); ++byte) {
        const std::size_t lower = kAll - upper.size();
        const auto c = byte < lower ? static_cast<char16_t>(byte) : upper[byte - lower];
        if (c != kNothing) {
            append(characters[byte], c);
        }
    }
    return true;
}

}  // namespace

std::size_t characterLength(std::string_view text) {
    if (text.empty()) {
        return 0;
    }
    const std::uint8_t lead = byteOf(text, 0);
    const std::size_t length = lead < 0x80U                   ? 1
                               : lead < 0xC2U || lead > 0xF4U ? 0
                               : lead < 0xE0U                 ? 2
                               : lead < 0xF0U                 ? 3
                                                              : 4;
    for (std::size_t i = 1; i < length; ++i) {
        if (i == text.size() || (byteOf(text, i) & 0xC0U) != 0x80U) {
            return 0;
        }
    }
    return length;
}

std::optional<DecodingFailure> decode(std::string& bytes) {
    const std::string_view start = std::string_view(bytes).substr(0, 4);
    using namespace std::string_view_literals;
    const bool isLittle = start.starts_with("\xFF\xFE") || start.starts_with("<\0"sv);
    if (isLittle || start.starts_with("\xFE\xFF") || start.starts_with("\0<"sv)) {
        return decodeUtf16(bytes, isLittle);
    }
    if (start.starts_with("\xEF\xBB\xBF")) {
        bytes.erase(0, 3);  // what is declared counts
    }
    const std::string declared = declaredEncoding(bytes);
    const std::string name = canonical(capitals(declared));
    if (name.empty() || name == "UTF-8" || name == "UTF8" ||
        name == "UTF-16") {  // the last was seen to be wrong
        return std::nullopt;
    }
    Characters characters;
    std::optional<platform::TextDecoder> decoder;
    if (!fillFromTables(name, characters)) {
        decoder.emplace(declared);
        if (!decoder->isOpen()) {
            return DecodingFailure{
                "the encoding '" + declared +
                    "' is unknown here; UTF-8, UTF-16, US-ASCII, ISO-8859-1 to -16 and windows-1250 "
                    "to -1258 are known everywhere",
                0};
        }
        for (std::size_t byte = 0; byte < kAll; ++byte) {
            const char one = static_cast<char>(static_cast<unsigned char>(byte));
            if (decoder->decode({&one, 1}, characters[byte]) == 0) {
                characters[byte].clear();
            }
        }
    }
    // Byte by byte: a converter that sees them together may put a letter and its mark into one character.
    const auto bad = std::find_if(bytes.begin(), bytes.end(), [&](char byte) {
        return characters[static_cast<unsigned char>(byte)].empty();
    });
    std::string utf8;
    auto failed = static_cast<std::size_t>(bad - bytes.begin());
    if (bad == bytes.end()) {
        for (const char byte : bytes) {
            utf8 += characters[static_cast<unsigned char>(byte)];
        }
    } else if (decoder) {
        failed = decoder->decode(bytes, utf8);
    }
    if (failed < bytes.size()) {
        return DecodingFailure{"no character of the encoding '" + declared + "'", failed};
    }
    bytes = std::move(utf8);
    return std::nullopt;
}

}  // namespace config
