#include "session/SessionRecord.h"

#include "common/ShownText.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <vector>

namespace session {

namespace {

using nlohmann::ordered_json;

constexpr std::string_view kStart = "{\"t\":";
constexpr std::string_view kStartCall = "\"verb\":\"start ";
constexpr int kMillisecondsPerSecond = 1000;
constexpr double kLatest = 1e12;  // seconds
constexpr int kDeepest = 16;      // far deeper than any event

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

void SessionRecord::addLine(std::string_view line) {
    // A trace of a year has ten million lines and few different ones: those known but for the time are not
    // looked into again, but for starts: what a configuration says may have changed.
    if (line.starts_with(kStart)) {
        double seconds = 0;
        const auto [end, error] =
            std::from_chars(line.data() + kStart.size(), line.data() + line.size(), seconds);
        if (error == std::errc() && end != line.data() + line.size() && *end == ',') {
            const std::string body = bodyOf(line);
            if (data_.knows(body) && body.find(kStartCall) == std::string::npos && seconds >= 0 &&
                seconds < kLatest) {
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

std::string SessionRecord::knownPart(const std::string& message) const {
    const config::Settings& settings = texts_.settings;
    std::string part;
    const auto look = [&](const std::string& text) {
        if (!texts_.source.empty() && !text.empty() && message.find(text) != std::string::npos) {
            part += (part.empty() ? "" : "; ") + text;
        }
    };
    for (const auto* list : {&settings.tunnelOpenMessages, &settings.tunnelCloseMessages,
                             &settings.fileOpenMessages, &settings.fileCloseMessages}) {
        std::ranges::for_each(config::textsOf(*list), look);
    }
    look(settings.abortMessage);
    return part;
}

std::optional<std::int64_t> SessionRecord::wallAt(std::int64_t time) const {
    return data_.hasClock() ? data_.wallAt(time)
           : clock_         ? std::optional(clock_->count() + time)
                            : std::nullopt;
}

std::string SessionRecord::json() const {
    std::string target = "{\"title\":" + logreader::scriptText(title_) +
                         ",\"note\":" + logreader::scriptText(note_) + ",\"texts\":" + asJson(texts_);
    target += ",\"start\":" + (clock_ ? std::to_string(clock_->count()) : "null") +
              ",\"log\":" + (isLog_ ? "true" : "false") + ",\n";
    data_.appendJson(target);
    return target + "}";
}

}  // namespace session
