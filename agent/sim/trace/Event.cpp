#include "sim/trace/Event.h"

#include "common/ShownText.h"

namespace sim {

namespace {

void appendValue(std::string& target, const std::optional<std::string>& text) {
    target += text ? logreader::jsonText(*text) : "null";
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
        target += logreader::jsonText(name) + ',';
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
    return tools::secondsText(std::chrono::duration_cast<std::chrono::milliseconds>(instant).count());
}

std::string asJson(const Event& event) {
    std::string line = "{\"t\":" + secondsText(event.time) +
                       ",\"thread\":" + logreader::jsonText(event.thread) +
                       ",\"event\":" + logreader::jsonText(event.name);
    for (const auto& [key, value] : event.fields) {
        line.append(",\"").append(key).append("\":");
        appendValue(line, value);
    }
    return line + "}\n";
}

}  // namespace sim
