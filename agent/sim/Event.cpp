#include "Event.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace sim {

namespace {

void appendUnicode(std::string& target, unsigned char byte) {
    std::array<char, 8> code = {};
    std::snprintf(code.data(), code.size(), "\\u%04x", unsigned{byte});
    target += code.data();
}

void appendText(std::string& target, std::string_view text) {
    target += '"';
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        constexpr std::string_view escaped = "\"\\\n\t\r\b\f";
        const std::size_t at = escaped.find(c);
        if (at != std::string_view::npos) {
            target += '\\';
            target += "\"\\ntrbf"[at];
        } else if (byte < 0x20 || byte > 127) {
            appendUnicode(target, byte);
        } else {
            target += c;
        }
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
