#include "sim/trace/Timeline.h"

#include "common/ShownText.h"
#include "platform/Clock.h"
#include "sim/trace/Event.h"
#include "sim/trace/EventFields.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <ctime>

namespace sim {

namespace {

/// The text in quotes, or "nothing" for null.
std::string quoted(const Event& event, std::string_view key) {
    const auto text = textOf(event, key);
    return text ? logreader::jsonText(*text) : "nothing";
}

/// The text without quotes around it or escapes before those in it; line ends stay escaped.
std::string plain(const Event& event, std::string_view key) {
    std::string text = quoted(event, key);
    if (text.front() == '"') {
        text = text.substr(1, text.size() - 2);
        for (std::size_t at = text.find("\\\""); at != std::string::npos; at = text.find("\\\"", at)) {
            text.erase(at, 1);
        }
    }
    return text;
}

std::string numberText(const Event& event, std::string_view key) {
    return std::to_string(numberOf(event, key));
}

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

std::string callText(const Event& event) {
    std::string text = "call: " + plain(event, "verb") + " -> " + numberText(event, "result");
    if (const auto stage = textOf(event, "stage"); stage && *stage != "cleanup") {
        text += ", no further than " + *stage;
    }
    if (textOf(event, "response")) {
        text += ", response " + plain(event, "response");
    }
    if (const auto* answer = fieldOf<std::optional<agent::NamedValues>>(event, "answer");
        answer != nullptr && *answer) {
        text += ", answer " + listText(**answer);
    }
    return text;
}

std::string what(const Event& event) {
    if (event.name == "call") {
        return callText(event);
    }
    if (event.name == "log") {
        return "log " + numberText(event, "level") + ": " + quoted(event, "text");
    }
    if (event.name == "stdout") {
        return "standard output: " + quoted(event, "text");
    }
    if (event.name == "credentials") {
        return "credentials: of member " + plain(event, "member");
    }
    if (event.name == "force-poll") {
        return "poll: the enterprise is asked";
    }
    if (event.name == "update-asset") {
        return std::string("profile: ") + (numberOf(event, "result") == 0 ? "accepted" : "refused") +
               " by the enterprise: " + listText(listOf(event, "properties"));
    }
    if (event.name == "thread-start") {
        return "thread: " + plain(event, "name") +
               (numberOf(event, "result") == 0 ? " is started" : " cannot be started");
    }
    if (event.name == "thread-end") {
        return "thread: ends with " + numberText(event, "result");
    }
    if (event.name == "thread-destroyed") {
        return "thread: destroyed while it runs";
    }
    if (event.name == "sleep") {
        return "sleep: " + numberText(event, "ms") + " ms";
    }
    return "file: " + plain(event, "path") + " holds " + quoted(event, "text");
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

std::string profileText(const Event& event) {
    const agent::NamedValues list = listOf(event, "properties");
    const auto property = [&](std::string_view name) { return valueOf(list, name).value_or("0"); };
    std::string text = std::string("profile ") + (numberOf(event, "result") == 0 ? "accepted" : "refused") +
                       ": " + modeText(property("RSM_MODE"));
    if (property("RSM_GRACE_PERIOD") != "0") {
        text += ", " + periodText(property("RSM_GRACE_PERIOD"), property("RSM_FORCED_POLLING_RATE"));
    }
    if (std::string start = property("RSM_DELAY_PROFILE_START_TIME"); start != "0") {
        if (const std::size_t zone = start.find("GMT "); zone != std::string::npos) {
            start.erase(zone, 4);  // as all times of the timeline
        }
        text += "; next " + start + ", " +
                periodText(property("RSM_DELAY_PROFILE_GRACE_PERIOD"),
                           property("RSM_DELAY_PROFILE_FORCED_POLLING_RATE"));
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
    return callText(shown).substr(std::string_view("call: ").size());
}

std::string clockText(std::chrono::microseconds wall) {
    const std::tm fields = platform::utcFields(std::chrono::floor<std::chrono::seconds>(wall).count());
    std::array<char, 32> text = {};
    std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%SZ", &fields);
    return text.data();
}

/// What a terminal would act upon, or a reader not see, stands as its code.
std::string lineOf(const char* start, const std::string& text, const std::string& remark) {
    std::string line;
    logreader::appendShown(line, start + text + (remark.empty() ? "" : "  (" + remark + ")"), "");
    return line + "\n";
}

}  // namespace

std::string asTimeline(const Event& event) {
    std::array<char, 128> start = {};
    std::snprintf(start.data(), start.size(), "%12s  %s  %-12s  ", secondsText(event.time).c_str(),
                  clockText(event.wall).c_str(), event.thread.c_str());
    return lineOf(start.data(), what(event), event.remark);
}

std::string asBrief(const Event& event, const std::string& text) {
    std::array<char, 128> start = {};
    std::snprintf(start.data(), start.size(), "%9s %s %-12s ", secondsText(event.time).c_str(),
                  clockText(event.wall).substr(11).c_str(), event.thread.c_str());
    const std::string shown = !text.empty()                  ? text
                              : event.name == "update-asset" ? profileText(event)
                              : event.name == "call"         ? briefCallText(event)
                                                             : what(event);
    return lineOf(start.data(), shown, event.remark);
}

}  // namespace sim
