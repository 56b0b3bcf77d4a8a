#include "config/Encoding.h"

#include "config/OneByteEncodings.h"
#include "platform/TextDecoder.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>
#include <utility>

namespace config {
namespace {

constexpr char16_t kNothing = 0xFFFD;
constexpr std::size_t kAll = 0x100;

std::uint8_t byteOf(std::string_view text, std::size_t at) noexcept {
    return static_cast<std::uint8_t>(text[at]);
}

void append(std::string& utf8, char32_t c) {
    // The first byte says by its upper bits how many follow, each of which has six bits of the character.
    static constexpr char32_t kLead[] = {0, 0xC0, 0xE0, 0xF0};
    const auto put = [&](char32_t byte) { utf8 += static_cast<char>(static_cast<unsigned char>(byte)); };
    unsigned int following = c < 0x80 ? 0 : c < 0x800 ? 1 : c < 0x10000 ? 2 : 3;
    put(kLead[following] | c >> 6 * following);
    while (following-- > 0) {
        put(0x80U | (c >> 6 * following & 0x3FU));
    }
}

/// The usual name, in capitals, of an encoding that goes by others, too.
std::string canonical(std::string name) {
    static constexpr std::pair<std::string_view, std::string_view> kUsual[] = {
        {"ISO_8859-", "ISO-8859-"}, {"ISO8859-", "ISO-8859-"}, {"CP125", "WINDOWS-125"}};
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    for (const auto& [other, usual] : kUsual) {
        if (name.starts_with(other)) {
            return name.replace(0, other.size(), usual);
        }
    }
    return name == "ASCII" ? "US-ASCII" : name == "LATIN1" ? "ISO-8859-1" : name;
}

/// The name of the encoding in an XML declaration; empty when there is none.
std::string declaredEncoding(std::string_view text) {
    text = text.substr(0, text.starts_with("<?xml") ? text.find("?>") : 0);
    constexpr std::string_view keyword = "encoding";
    const auto skip = [&text](std::size_t characters) {
        text.remove_prefix(std::min(characters, text.size()));
        text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
    };
    skip(text.find(keyword));
    skip(keyword.size());
    if (!text.starts_with('=')) {
        return {};
    }
    skip(1);
    if (!text.starts_with('"') && !text.starts_with('\'')) {
        return {};
    }
    return std::string(text.substr(1, text.find(text[0], 1) - 1));
}

std::optional<DecodingFailure> decodeUtf16(std::string& bytes, bool isLittle) {
    std::string utf8;
    const auto unit = [&](std::size_t at) -> char32_t {
        const std::size_t upper = at + (isLittle ? 1 : 0);
        const std::size_t lower = at + (isLittle ? 0 : 1);
        return at + 1 < bytes.size() ? byteOf(bytes, upper) * 0x100U + byteOf(bytes, lower) : 0;
    };
    const auto isSurrogate = [](char32_t c, char32_t kind) { return (c & 0xFC00U) == kind; };
    for (std::size_t i = 0; i < bytes.size(); i += 2) {
        char32_t c = unit(i);
        if (isSurrogate(c, 0xD800) && isSurrogate(unit(i + 2), 0xDC00)) {
            c = 0x10000 + ((c - 0xD800) << 10U) + (unit(i + 2) - 0xDC00);
            i += 2;
        } else if (i + 1 == bytes.size() || isSurrogate(c, 0xD800) || isSurrogate(c, 0xDC00)) {
            return DecodingFailure{"half a character", i};
        }
        if (c != 0xFEFF || i > 0) {
            append(utf8, c);
        }
    }
    bytes = std::move(utf8);
    const std::string declared = declaredEncoding(bytes);
    const std::string name = canonical(declared);
    if (name.empty() || name == "UTF-16" || name == "ISO-10646-UCS-2" ||
        name == (isLittle ? "UTF-16LE" : "UTF-16BE")) {
        return std::nullopt;
    }
    return DecodingFailure{"the encoding '" + declared + "' is declared, and this is UTF-16", 0};
}

/// What each byte stands for by itself; empty texts are not characters.
using Characters = std::array<std::string, kAll>;

/// Those of an encoding that is known here.
bool fillFromTables(const std::string& name, Characters& characters) {
    const bool isAscii = name == "US-ASCII";
    const auto* const found =
        std::find_if(std::begin(kOneByteEncodings), std::end(kOneByteEncodings),
                     [&](const auto& one) { return one.name == (isAscii ? "ISO-8859-1" : name); });
    if (found == std::end(kOneByteEncodings)) {
        return false;
    }
    const std::size_t lower = kAll - found->upper.size();
    for (std::size_t byte = 0; byte < (isAscii ? 0x80U : kAll); ++byte) {
        const auto c = byte < lower ? static_cast<char16_t>(byte) : found->upper[byte - lower];
        if (c != kNothing) {
            append(characters[byte], c);
        }
    }
    return true;
}

}  // namespace

std::size_t characterLength(std::string_view text) {
    const std::uint8_t lead = text.empty() ? std::uint8_t{0xFF} : byteOf(text, 0);
    const std::size_t length = lead < 0x80U                   ? 1
                               : lead < 0xC2U || lead > 0xF4U ? 0
                               : lead < 0xE0U                 ? 2
                               : lead < 0xF0U                 ? 3
                                                              : 4;
    const auto continues = [](char byte) { return (static_cast<std::uint8_t>(byte) & 0xC0U) == 0x80U; };
    const std::string_view rest = text.substr(0, length).substr(std::min<std::size_t>(length, 1));
    return rest.size() + 1 == length && std::all_of(rest.begin(), rest.end(), continues) ? length : 0;
}

std::optional<DecodingFailure> decode(std::string& bytes) {
    const std::string_view start = std::string_view(bytes).substr(0, 4);
    using namespace std::string_view_literals;
    const bool isLittle = start.starts_with("\xFF\xFE") || start.starts_with("<\0"sv);
    if (isLittle || start.starts_with("\xFE\xFF") || start.starts_with("\0<"sv)) {
        return decodeUtf16(bytes, isLittle);
    }
    if (start.starts_with("\xEF\xBB\xBF")) {
        bytes.erase(0, 3);  // the declaration counts
    }
    const std::string declared = declaredEncoding(bytes);
    const std::string name = canonical(declared);
    // UTF-16 was seen to be wrong.
    if (name.empty() || name == "UTF-8" || name == "UTF8" || name == "UTF-16") {
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
    std::string utf8;
    std::size_t good = 0;
    while (good < bytes.size() && !characters[byteOf(bytes, good)].empty()) {
        utf8 += characters[byteOf(bytes, good++)];
    }
    if (good < bytes.size() && decoder) {
        utf8.clear();
        good = decoder->decode(bytes, utf8);
    }
    if (good < bytes.size()) {
        return DecodingFailure{"no character of the encoding '" + declared + "'", good};
    }
    bytes = std::move(utf8);
    return std::nullopt;
}

}  // namespace config
