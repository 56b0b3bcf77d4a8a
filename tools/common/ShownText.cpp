#include "common/ShownText.h"

#include "config/Encoding.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace logreader {

namespace {

/// One character of UTF-8, or one byte that is not part of one.
struct Character {
    char32_t code = 0;
    std::size_t length = 1;
    bool valid = false;
};

Character characterAt(std::string_view text) {
    const auto byteAt = [&](std::size_t index) { return static_cast<unsigned char>(text[index]); };
    if (byteAt(0) < 0x80) {
        return {byteAt(0), 1, true};
    }
    const std::size_t length = config::characterLength(text);
    char32_t code = byteAt(0) & (0xFFU >> (length + 1));
    for (std::size_t index = 1; index < length; ++index) {
        code = code << 6U | (byteAt(index) & 0x3FU);
    }
    constexpr std::array<char32_t, 5> kSmallest = {0, 0, 0x80, 0x800, 0x10000};
    const bool surrogate = code >= 0xD800 && code < 0xE000;
    if (length == 0 || code < kSmallest[length] || code > 0x10FFFF || surrogate) {
        return {byteAt(0)};
    }
    return {code, length, true};
}

bool isControl(char32_t code) {
    return code < 0x20 || (code >= 0x7F && code < 0xA0);
}

/// Line ends beyond ASCII, and marks that make a text look as if it were written in another order.
bool isTreacherous(char32_t code) {
    return code == 0x61C || code == 0x200E || code == 0x200F || (code >= 0x2028 && code <= 0x202E) ||
           (code >= 0x2066 && code <= 0x2069);
}

void appendCode(std::string& target, const char* format, char32_t code) {
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), format, static_cast<unsigned>(code));
    target += text.data();
}

/// How text is copied: `json` when quotes and backslashes need care, too.
enum class Form : std::uint8_t { shown, json };

/// Length of the printable ASCII with which `text` begins, perhaps up to 7 characters less. Nearly all
/// messages are nothing else, and are copied whole.
template <Form form>
std::size_t plainLength(std::string_view text) {
    constexpr std::uint64_t kEach = 0x0101010101010101;
    // Each of these sets a top bit for the bytes it is named after.
    const auto below = [](std::uint64_t word, std::uint64_t byte) { return (word - kEach * byte) & ~word; };
    const auto equal = [&](std::uint64_t word, char byte) {
        return below(word ^ (kEach * static_cast<unsigned char>(byte)), 1);
    };
    const auto fromDelOn = [](std::uint64_t word) { return (word + kEach) | word; };
    std::size_t length = 0;
    for (std::uint64_t word = 0; length + sizeof word <= text.size(); length += sizeof word) {
        std::memcpy(&word, text.data() + length, sizeof word);
        std::uint64_t special = below(word, ' ') | fromDelOn(word);
        if constexpr (form == Form::json) {
            special |= equal(word, '"') | equal(word, '\\');
        }
        if ((special & (kEach * 0x80)) != 0) {
            break;
        }
    }
    return length;
}

/// Copies plain text and calls `append(character, its bytes, what follows)` for all else.
template <Form form, typename Append>
void appendAll(std::string& target, std::string_view text, Append&& append) {
    while (!text.empty()) {
        const std::size_t plain = plainLength<form>(text);
        target.append(text.substr(0, plain));
        text.remove_prefix(plain);
        for (std::size_t count = 0; count < sizeof(std::uint64_t) && !text.empty(); ++count) {
            const Character character = characterAt(text);
            append(character, text.substr(0, character.length), text.substr(character.length));
            text.remove_prefix(character.length);
        }
    }
}

}  // namespace

void appendShown(std::string& target, std::string_view text, std::string_view indent) {
    appendAll<Form::shown>(
        target, text, [&](Character character, std::string_view bytes, std::string_view rest) {
            if (character.code == '\n') {
                target.append(bytes).append(indent);
            } else if (character.code == '\r' && rest.starts_with('\n')) {
                // Half of a line end.
            } else if (!character.valid || (isControl(character.code) && character.code != '\t')) {
                for (const char byte : bytes) {
                    appendCode(target, "\\x%02x", static_cast<unsigned char>(byte));
                }
            } else if (isTreacherous(character.code)) {
                appendCode(target, "\\u%04x", character.code);
            } else {
                target.append(bytes);
            }
        });
}

void appendJson(std::string& target, std::string_view text) {
    target += '"';
    appendAll<Form::json>(target, text, [&](Character character, std::string_view bytes, std::string_view) {
        if (character.code == '"' || character.code == '\\') {
            target.append("\\").append(bytes);
        } else if (character.code == '\n') {
            target += "\\n";
        } else if (character.code == '\t') {
            target += "\\t";
        } else if (!character.valid || isControl(character.code) || isTreacherous(character.code)) {
            appendCode(target, "\\u%04x", character.code);
        } else {
            target.append(bytes);
        }
    });
    target += '"';
}

std::string jsonText(std::string_view text) {
    std::string target = "\"";
    appendAll<Form::json>(target, text, [&](Character character, std::string_view bytes, std::string_view) {
        constexpr std::string_view kEscaped = "\"\\\n\t\r\b\f";
        if (const std::size_t found = kEscaped.find(bytes.front()); found != std::string_view::npos) {
            target += '\\';
            target += "\"\\ntrbf"[found];
        } else if (!character.valid || character.code < 0x20) {
            appendCode(target, "\\u%04x", character.code);
        } else {
            target.append(bytes);
        }
    });
    return target + '"';
}

std::string scriptSafe(std::string_view json) {
    std::string target;
    target.reserve(json.size());
    for (const char c : json) {
        if (c == '<') {
            target += "\\u003c";
        } else {
            target += c;
        }
    }
    return target;
}

std::string scriptText(std::string_view text) {
    return scriptSafe(jsonText(text));
}

}  // namespace logreader

std::string tools::secondsText(std::int64_t milliseconds) {
    std::array<char, 32> text = {};
    std::snprintf(text.data(), text.size(), "%lld.%03lld", static_cast<long long>(milliseconds / 1000),
                  static_cast<long long>(milliseconds % 1000));
    return text.data();
}
