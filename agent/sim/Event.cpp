#include "sim/Event.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace sim {

namespace {

/// Length of the UTF-8 character beyond ASCII that `text` begins with; 0 when it begins with none.
std::size_t characterLength(std::string_view text) {
    const auto byte = [text](std::size_t at) { return static_cast<unsigned char>(text[at]); };
    const std::size_t length = byte(0) >= 0xF0 ? 4 : byte(0) >= 0xE0 ? 3 : 2;
    if (byte(0) < 0xC2 || byte(0) > 0xF4 || text.size() < length) {
        return 0;
    }
    // The bounds of the second byte keep out surrogates, overlong forms and anything that is not a character.
    const unsigned char least = byte(0) == 0xE0 ? 0xA0 : byte(0) == 0xF0 ? 0x90 : 0x80;
    const unsigned char most = byte(0) == 0xED ? 0x9F : byte(0) == 0xF4 ? 0x8F : 0xBF;
    bool valid = byte(1) >= least && byte(1) <= most;
    for (std::size_t at = 2; at < length; ++at) {
        valid = valid && (byte(at) & 0xC0) == 0x80;
    }
    return valid ? length : 0;
}

void appendUnicode(std::string& target, unsigned char byte) {
    std::array<char, 8> code = {};
    std::snprintf(code.data(), code.size(), "\\u%04x", unsigned{byte});
    target += code.data();
}

void appendText(std::string& target, std::string_view text) {
    target += '"';
    for (std::size_t at = 0; at < text.size();) {
        const auto byte = static_cast<unsigned char>(text[at]);
        const std::size_t length = byte > 127 ? characterLength(text.substr(at)) : 1;
        constexpr std::string_view escaped = "\"\\\n\t\r\b\f";
        if (const std::size_t found = escaped.find(text[at]); found != std::string_view::npos) {
            target += '\\';
            target += "\"\\ntrbf"[found];
        } else if (byte < 0x20 || length == 0) {
            appendUnicode(target, byte);
        } else {
            target += text.substr(at, length);
        }
        at += std::max<std::size_t>(length, 1);
    }
    target += '"';
}

void appendValue(std::string& target, const std::optional<std::string>& text) {
    if (text) {
        appendText(target, *text);
    } else {
        target += "null";
    }
}

void appendValue(std::string& target, std::int64_t number) {
    target += std::to_string(number);
}

void appendValue(std::string& target, const std::optional<agent::NamedValues>& list) {
    if (!list) {
        target += "null";
        return;
    }
    target += '[';
    for (const auto& [name, value] : *list) {
        target += target.back() == '[' ? "[" : ",[";
        appendText(target, name);
        target += ',';
        appendValue(target, value);
        target += ']';
    }
    target += ']';
}

void appendValue(std::string& target, const Value& value) {
    std::visit([&target](const auto& held) { appendValue(target, held); }, value);
}

}  // namespace

std::string secondsText(Instant instant) {
    std::array<char, 32> text = {};
    const long long milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(instant).count();
    std::snprintf(text.data(), text.size(), "%lld.%03lld", milliseconds / 1000, milliseconds % 1000);
    return text.data();
}

std::string asJsonText(std::string_view text) {
    std::string target;
    appendText(target, text);
    return target;
}

std::string asJson(const Event& event) {
    std::string line = "{\"t\":" + secondsText(event.time) + ",\"thread\":";
    appendText(line, event.thread);
    line += ",\"event\":";
    appendText(line, event.name);
    for (const auto& [key, value] : event.fields) {
        line.append(",\"").append(key).append("\":");
        appendValue(line, value);
    }
    return line + "}\n";
}

}  // namespace sim
