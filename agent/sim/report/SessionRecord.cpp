#include "sim/report/SessionRecord.h"

#include "sim/Event.h"
#include "sim/report/ScriptText.h"

#include <charconv>
#include <cmath>
#include <nlohmann/json.hpp>
#include <stdexcept>

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

}  // namespace

void SessionRecord::onEvent(const Event& event) noexcept {
    std::string line = asJson(event);
    line.pop_back();  // its line end
    const std::string body = bodyOf(line);
    lookForConfiguration(body);
    data_.add(milliseconds(event.time), milliseconds(event.wall), body);
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
    // What is nested deeper would take the stack when it is written again.
    bool isDeep = false;
    const auto look = [&isDeep](int depth, ordered_json::parse_event_t, const ordered_json&) {
        isDeep = isDeep || depth > kDeepest;
        return !isDeep;
    };
    ordered_json event = ordered_json::parse(line, look, false);
    if (isDeep || !event.is_object() || !event.contains("t") || !event["t"].is_number() ||
        !event.contains("thread") || !event["thread"].is_string() || !event.contains("event") ||
        !event["event"].is_string()) {
        throw std::runtime_error("is no event of a trace");
    }
    const double seconds = event["t"].get<double>();
    if (!(seconds >= 0 && seconds < kLatest)) {
        throw std::runtime_error("its time is out of range");
    }
    event.erase("t");
    const std::string body = event.dump();
    lookForConfiguration(body);
    data_.add(std::llround(seconds * kMillisecondsPerSecond), body);
}

void SessionRecord::useConfiguration(const std::string& file) {
    texts_ = readAuditTexts(file);
    if (texts_.source.empty()) {
        throw std::runtime_error(file + ": cannot be read as a configuration");
    }
    textsAreFixed_ = true;
}

void SessionRecord::lookForConfiguration(std::string_view body) {
    if (textsAreFixed_ || body.find("\"verb\":\"start ") == std::string_view::npos) {
        return;
    }
    const auto event = nlohmann::json::parse(body, nullptr, false);
    const auto verb = event.is_object() ? event.value("verb", nlohmann::json()) : nlohmann::json();
    if (!verb.is_string() || event.value("result", nlohmann::json()) != 0) {
        return;
    }
    const auto& text = verb.get_ref<const std::string&>();
    for (const std::string_view start : {"start rsm ", "start logger "}) {
        if (text.starts_with(start)) {
            texts_ = readAuditTexts(text.substr(start.size()));
        }
    }
}

std::string SessionRecord::json() const {
    std::string target = "{\"title\":" + asScriptText(title_) + ",\"note\":" + asScriptText(note_) +
                         ",\"texts\":" + sim::asJson(texts_);
    target += ",\"start\":" + (clock_ ? std::to_string(clock_->count()) : "null") + ",\n";
    data_.appendJson(target);
    return target + "}";
}

}  // namespace sim
