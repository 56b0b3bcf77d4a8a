#include "sim/report/SessionRecord.h"

#include "sim/EventFields.h"
#include "sim/report/ScriptText.h"

#include <charconv>
#include <cmath>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <vector>

namespace sim {

namespace {

using nlohmann::ordered_json;

constexpr std::string_view kStart = "{\"t\":";
constexpr int kMillisecondsPerSecond = 1000;
constexpr double kLatest = 1e12;  // seconds
constexpr int kDeepest = 16;      // far deeper than any event

std::int64_t milliseconds(std::chrono::microseconds time) {
    return std::chrono::floor<std::chrono::milliseconds>(time).count();
}

/// What follows the time in a line of a trace, as an object of its own.
std::string bodyOf(std::string_view line) {
    return std::string("{").append(line.substr(line.find(',') + 1));
}

/// The fields that tell what a message means.
std::vector<std::pair<const char*, const char*>> fieldsOf(const AuditMeaning& meaning) {
    static constexpr const char* names[] = {"none", "open", "close", "abort"};
    std::vector<std::pair<const char*, const char*>> fields;
    for (const auto& [key, activity] : {std::pair("tunnel", meaning.tunnel), {"file", meaning.file}}) {
        if (activity != Activity::none) {
            fields.emplace_back(key, names[static_cast<std::size_t>(activity)]);
        }
    }
    return fields;
}

}  // namespace

void SessionRecord::onEvent(const Event& event) noexcept {
    const std::string verb = textOf(event, "verb").value_or("");
    noteCall(verb, numberOf(event, "result") == 0);
    const std::int64_t time = milliseconds(event.time);
    if (event.name == "clock-step" || !data_.hasClock()) {
        data_.setClock(time, milliseconds(event.wall));
    }
    if (event.name == "clock-step" || event.name == "audit") {
        return;
    }
    if (event.name == "unload") {
        data_.addKill(time);
        return;
    }
    std::string line = asJson(event);
    line.resize(line.size() - std::string_view("}\n").size());
    for (const auto& [key, value] : fieldsOf(meaningOf(verb))) {
        line += ",\"" + std::string(key) + "\":\"" + value + "\"";
    }
    data_.add(time, bodyOf(line + "}"));
}

void SessionRecord::addLine(std::string_view line) {
    // A trace of a year has ten million lines and few different ones: those known but for the time are not
    // looked into again.
    if (line.starts_with(kStart)) {
        double seconds = 0;
        const auto [end, error] =
            std::from_chars(line.data() + kStart.size(), line.data() + line.size(), seconds);
        if (error == std::errc() && end != line.data() + line.size() && *end == ',') {
            const std::string body = bodyOf(line);
            if (data_.knows(body) && seconds >= 0 && seconds < kLatest) {
                data_.add(std::llround(seconds * kMillisecondsPerSecond), body);
                return;
            }
        }
    }
    // Deeper nesting would take the stack when it is written again.
    bool isDeep = false;
    const auto look = [&isDeep](int depth, ordered_json::parse_event_t, const ordered_json&) {
        isDeep = isDeep || depth > kDeepest;
        return !isDeep;
    };
    ordered_json event = ordered_json::parse(line, look, false);
    if (isDeep || !event.is_object() || !event.contains("t") || !event["t"].is_number() ||
        !event.contains("thread") || !event["thread"].is_string() || !event.contains("event") ||
        !event["event"].is_string()) {
        throw std::runtime_error("is not an event of a trace");
    }
    const double seconds = event["t"].get<double>();
    if (!(seconds >= 0 && seconds < kLatest)) {
        throw std::runtime_error("its time is out of range");
    }
    event.erase("t");
    const ordered_json& verb = event.value("verb", ordered_json());
    if (verb.is_string()) {
        const std::string words = verb.get<std::string>();
        noteCall(words, event.value("result", ordered_json()) == 0);
        event.erase("tunnel");
        event.erase("file");
        for (const auto& [key, value] : fieldsOf(meaningOf(words))) {
            event[key] = value;
        }
    }
    data_.add(std::llround(seconds * kMillisecondsPerSecond), event.dump());
}

void SessionRecord::useTexts(const std::string& file) {
    texts_ = readAuditTexts(file);
    activity_ = ActivityTexts(texts_.settings);
}

void SessionRecord::useConfiguration(const std::string& file) {
    useTexts(file);
    if (texts_.source.empty()) {
        throw std::runtime_error(file + ": cannot be read as a configuration");
    }
    textsAreFixed_ = true;
}

void SessionRecord::noteCall(const std::string& verb, bool succeeded) {
    for (const std::string_view start : {"start rsm ", "start logger "}) {
        if (!textsAreFixed_ && succeeded && verb.starts_with(start)) {
            useTexts(verb.substr(start.size()));
        }
    }
}

AuditMeaning SessionRecord::meaningOf(const std::string& verb) const {
    constexpr std::string_view audit = "audit ";
    if (!verb.starts_with(audit)) {
        return {};
    }
    const std::string text = verb.substr(audit.size());
    return texts_.source.empty() ? meaningByWords(text) : activity_.meaningOf(text.c_str());
}

std::string SessionRecord::json() const {
    std::string target = "{\"title\":" + asScriptText(title_) + ",\"note\":" + asScriptText(note_) +
                         ",\"texts\":" + sim::asJson(texts_);
    target += ",\"start\":" + (clock_ ? std::to_string(clock_->count()) : "null") + ",\n";
    data_.appendJson(target);
    return target + "}";
}

}  // namespace sim
