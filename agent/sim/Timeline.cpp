#include "sim/Timeline.h"

#include "sim/Calendar.h"
#include "sim/Event.h"
#include "sim/EventFields.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <ctime>

namespace sim {

namespace {

/// Reads the fields of an event by their names.
class Fields final {
  public:
    explicit Fields(const Event& event) : event_(event) {}

    std::int64_t number(std::string_view key) const {
        const auto* found = find<std::int64_t>(key);
        return found == nullptr ? 0 : *found;
    }
    /// The text in quotes, or "nothing" for null.
    std::string quoted(std::string_view key) const {
        const auto* found = find<std::optional<std::string>>(key);
        return found == nullptr || !*found ? "nothing" : asJsonText(**found);
    }
    /// The text without quotes around it or escapes before those in it; line ends stay escaped.
    std::string plain(std::string_view key) const {
        std::string text = quoted(key);
        if (text.front() == '"') {
            text = text.substr(1, text.size() - 2);
            for (std::size_t at = text.find("\\\""); at != std::string::npos; at = text.find("\\\"", at)) {
                text.erase(at, 1);
            }
        }
        return text;
    }
    bool has(std::string_view key) const {
        const auto* found = find<std::optional<std::string>>(key);
        return found != nullptr && found->has_value();
    }
    const agent::NamedValues* list(std::string_view key) const {
        const auto* found = find<std::optional<agent::NamedValues>>(key);
        return found == nullptr || !*found ? nullptr : &**found;
    }

  private:
    template <typename Kind>
    const Kind* find(std::string_view key) const {
        return fieldOf<Kind>(event_, key);
    }

    const Event& event_;
};

/// Names and values in one line; those that are 0 say nothing and are left out.
std::string listText(const agent::NamedValues& list) {
    std::string text;
    for (const auto& [name, value] : list) {
        if (value.value_or("") != "0") {
            text += (text.empty() ? "" : ", ") + name + " " + value.value_or("null");
        }
    }
    return text;
}

std::string callText(const Fields& fields) {
    std::string text = "call: " + fields.plain("verb") + " -> " + std::to_string(fields.number("result"));
    if (fields.has("stage") && fields.plain("stage") != "cleanup") {
        text += ", no further than " + fields.plain("stage");
    }
    if (fields.has("response")) {
        text += ", response " + fields.plain("response");
    }
    if (const agent::NamedValues* answer = fields.list("answer")) {
        text += ", answer " + listText(*answer);
    }
    return text;
}

std::string what(const Event& event) {
    const Fields fields(event);
    if (event.name == "call") {
        return callText(fields);
    }
    if (event.name == "log") {
        return "log " + std::to_string(fields.number("level")) + ": " + fields.quoted("text");
    }
    if (event.name == "stdout") {
        return "standard output: " + fields.quoted("text");
    }
    if (event.name == "credentials") {
        return "credentials: of member " + fields.plain("member");
    }
    if (event.name == "force-poll") {
        return "poll: the enterprise is asked";
    }
    if (event.name == "update-asset") {
        const agent::NamedValues* list = fields.list("properties");
        return std::string("profile: ") + (fields.number("result") == 0 ? "accepted" : "refused") +
               " by the enterprise: " + (list == nullptr ? "" : listText(*list));
    }
    if (event.name == "thread-start") {
        return "thread: " + fields.plain("name") +
               (fields.number("result") == 0 ? " is started" : " cannot be started");
    }
    if (event.name == "thread-end") {
        return "thread: ends with " + std::to_string(fields.number("result"));
    }
    if (event.name == "thread-destroyed") {
        return "thread: destroyed while it runs";
    }
    if (event.name == "sleep") {
        return "sleep: " + std::to_string(fields.number("ms")) + " ms";
    }
    return "file: " + fields.plain("path") + " holds " + fields.quoted("text");
}

/// A property of a profile; "0" when it is not there.
std::string property(const Fields& fields, std::string_view name) {
    const agent::NamedValues* list = fields.list("properties");
    for (const auto& [key, value] : list == nullptr ? agent::NamedValues() : *list) {
        if (key == name) {
            return value.value_or("0");
        }
    }
    return "0";
}

std::string periodText(const std::string& minutes, const std::string& rate) {
    return minutes + " min every " + rate + " s";
}

std::string modeText(const std::string& mode) {
    return mode == "FORCE_POLL_GRACE"      ? "grace"
           : mode == "FORCE_POLL_ACTIVITY" ? "activity"
           : mode == "NOT_ACTIVE"          ? "off"
                                           : mode;
}

std::string profileText(const Fields& fields) {
    std::string text = std::string("profile ") + (fields.number("result") == 0 ? "accepted" : "refused") +
                       ": " + modeText(property(fields, "RSM_MODE"));
    if (property(fields, "RSM_GRACE_PERIOD") != "0") {
        text += ", " +
                periodText(property(fields, "RSM_GRACE_PERIOD"), property(fields, "RSM_FORCED_POLLING_RATE"));
    }
    if (std::string start = property(fields, "RSM_DELAY_PROFILE_START_TIME"); start != "0") {
        if (const std::size_t zone = start.find("GMT "); zone != std::string::npos) {
            start.erase(zone, 4);  // as all times of the timeline
        }
        text += "; next " + start + ", " +
                periodText(property(fields, "RSM_DELAY_PROFILE_GRACE_PERIOD"),
                           property(fields, "RSM_DELAY_PROFILE_FORCED_POLLING_RATE"));
    }
    return text;
}

/// Long words leave room for the result, and the response of a call says no more than that.
std::string briefCallText(const Event& event) {
    constexpr std::size_t kLongest = 56;
    Event shown = event;
    std::erase_if(shown.fields, [](const auto& field) { return field.first == "response"; });
    for (auto& [key, value] : shown.fields) {
        auto* text = std::get_if<std::optional<std::string>>(&value);
        if (key == "verb" && text != nullptr && *text && (*text)->size() > kLongest) {
            std::size_t end = kLongest;
            while (end > 0 && (static_cast<unsigned char>((**text)[end]) & 0xC0) == 0x80) {
                --end;  // no half character
            }
            *text = (*text)->substr(0, end) + "\u2026";
        }
    }
    return callText(Fields(shown)).substr(std::string_view("call: ").size());
}

std::string clockText(std::chrono::microseconds wall) {
    const std::tm fields =
        utcFields(std::chrono::floor<std::chrono::seconds>(wall).count()).value_or(std::tm{});
    std::array<char, 32> text = {};
    std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%SZ", &fields);
    return text.data();
}

}  // namespace

std::string asTimeline(const Event& event) {
    std::array<char, 128> start = {};
    std::snprintf(start.data(), start.size(), "%12s  %s  %-12s  ", secondsText(event.time).c_str(),
                  clockText(event.wall).c_str(), event.thread.c_str());
    return start.data() + what(event) + (event.remark.empty() ? "" : "  (" + event.remark + ")") + "\n";
}

std::string asBrief(const Event& event, const std::string& text) {
    std::array<char, 128> start = {};
    std::snprintf(start.data(), start.size(), "%9s %s %-12s ", secondsText(event.time).c_str(),
                  clockText(event.wall).substr(11).c_str(), event.thread.c_str());
    const std::string shown = !text.empty()                  ? text
                              : event.name == "update-asset" ? profileText(Fields(event))
                              : event.name == "call"         ? briefCallText(event)
                                                             : what(event);
    return start.data() + shown + (event.remark.empty() ? "" : "  (" + event.remark + ")") + "\n";
}

}  // namespace sim
