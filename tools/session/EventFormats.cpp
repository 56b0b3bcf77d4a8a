#include "session/EventFormats.h"

#include "common/ShownText.h"
#include "platform/Clock.h"
#include "session/LogSession.h"
#include "session/SessionRecord.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <ctime>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace session {

namespace {

using nlohmann::ordered_json;

constexpr char kBlanks[] = " \t\r\n";

std::string dump(const ordered_json& json) {
    return json.dump(-1, ' ', false, ordered_json::error_handler_t::replace);
}

/// As in "2026-03-01T10:00:00.000Z".
std::string momentText(std::chrono::milliseconds moment) {
    const auto second = std::chrono::floor<std::chrono::seconds>(moment);
    const std::tm fields = platform::utcFields(second.count());
    std::array<char, 40> text = {};
    std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S", &fields);
    return text.data() + tools::secondsText((moment - second).count()).substr(1) + "Z";
}

/// A member's text, and the member is gone.
std::string take(ordered_json& event, const char* member) {
    const ordered_json value = event.value(member, ordered_json());
    event.erase(member);
    return value.is_null() ? "" : value.is_string() ? value.get<std::string>() : dump(value);
}

/// What an event is about, without the line ends around it.
std::string takeSubject(ordered_json& event) {
    for (const char* member : {"verb", "name", "path", "member", "ms", "text"}) {
        const std::string text = take(event, member);
        if (const std::size_t first = text.find_first_not_of(kBlanks); first != std::string::npos) {
            return text.substr(first, text.find_last_not_of(kBlanks) + 1 - first);
        }
    }
    return "";
}

ordered_json profileOf(const ordered_json& event) {
    ordered_json profile = ordered_json::object();
    const ordered_json& properties = event.value("properties", ordered_json::array());
    for (const ordered_json& pair : properties.is_array() ? properties : ordered_json::array()) {
        if (pair.is_array() && pair.size() == 2 && pair[0].is_string()) {
            profile[pair[0].get<std::string>()] = pair[1];
        }
    }
    return profile;
}

std::string cell(std::string text) {
    if (!text.empty() && std::string_view("=+-@\t\r").find(text.front()) != std::string_view::npos) {
        text.insert(0, "'");
    }
    std::string target = "\"";
    for (const char c : text) {
        target.append(c == '"' ? 2 : 1, c);
    }
    return target + '"';
}

/// The columns behind the times.
std::string rowOf(const std::string& body) {
    ordered_json event = ordered_json::parse(body);
    std::string row;
    for (const char* member : {"thread", "event"}) {
        row += "," + cell(take(event, member));
    }
    row += "," + cell(takeSubject(event)) + "," + take(event, "result");
    row += "," + cell(profileOf(event).value("RSM_MODE", ""));
    for (const char* member : {"tunnel", "file"}) {
        row += "," + cell(take(event, member));
    }
    return row + "," + (event.empty() ? "" : cell(dump(event))) + "\r\n";
}

enum Track : std::uint8_t { mode = 1, tunnel, file, polls, reports, orders, log, others };
constexpr std::pair<Track, const char*> kTracks[] = {
    {mode, "mode"},   {tunnel, "tunnel"},   {file, "file transfer"},
    {polls, "polls"}, {reports, "reports"}, {orders, "orders and calls"},
    {log, "log"},     {others, "others"}};

/// Makes of a session's events those of trace viewers.
class TraceEvents final {
  public:
    TraceEvents(std::ostream& target, std::size_t process, std::int64_t shift)
        : target_(target), process_(process), shift_(shift) {}

    void begin(const std::string& title) {
        put({{"ph", "M"}, {"name", "process_name"}, {"args", {{"name", title}}}}, others);
        for (const auto& [track, name] : kTracks) {
            put({{"ph", "M"}, {"name", "thread_name"}, {"args", {{"name", name}}}}, track);
        }
    }

    void take(std::int64_t time, const std::string& body) {
        time_ = time;
        ordered_json event = ordered_json::parse(body);
        const std::string what = event.value("event", "");
        for (const auto& [track, member] : {std::pair(tunnel, "tunnel"), {file, "file"}}) {
            change(track, event.value(member, ""));
        }
        if (what == "force-poll") {
            mark(polls, "poll", event);
        } else if (what == "update-asset") {
            takeReport(event);
        } else if (what == "call") {
            mark(orders, session::take(event, "verb"), event);
        } else if (what == "log") {
            const std::string text = session::take(event, "text");
            endMode(beginsAnew(text));
            mark(log, text, event);
        } else {
            endMode(what == "thread-destroyed");
            mark(others, what, event);
        }
    }

    /// What is still open ends with the session.
    void end() {
        endMode(true);
        change(tunnel, "abort");
        change(file, "abort");
    }

  private:
    void put(ordered_json event, Track track) {
        event["pid"] = process_;
        event["tid"] = static_cast<int>(track);
        event["ts"] = (time_ + shift_) * 1000;
        target_ << (process_ == 1 && isFirst_ ? "\n" : ",\n") << dump(event);
        isFirst_ = false;
    }
    void mark(Track track, const std::string& name, const ordered_json& args) {
        put({{"ph", "i"}, {"s", "t"}, {"name", name}, {"args", args}}, track);
    }
    void endMode(bool ends) {
        if (ends && !std::exchange(mode_, "").empty()) {
            put({{"ph", "E"}}, mode);
        }
    }
    void takeReport(const ordered_json& event) {
        const ordered_json profile = profileOf(event);
        const std::string name = profile.value("RSM_MODE", "");
        mark(reports, event.value("result", ordered_json()) == 0 ? "accepted" : "refused", profile);
        endMode(name != mode_);
        if (name != mode_) {
            mode_ = name;
            put({{"ph", "B"}, {"name", name}, {"args", profile}}, mode);
        }
    }
    /// Spans of one kind lie in each other, one for each that is open.
    void change(Track track, const std::string& activity) {
        std::size_t& open = track == tunnel ? openTunnels_ : openFiles_;
        if (activity == "open") {
            ++open;
            put({{"ph", "B"}, {"name", track == tunnel ? "tunnel" : "file transfer"}}, track);
        }
        for (std::size_t closed = activity == "close"   ? std::min<std::size_t>(open, 1)
                                  : activity == "abort" ? open
                                                        : 0;
             closed > 0; --closed, --open) {
            put({{"ph", "E"}}, track);
        }
    }

    std::ostream& target_;
    std::size_t process_;
    std::int64_t shift_;
    std::int64_t time_ = 0;
    std::string mode_;
    std::size_t openTunnels_ = 0;
    std::size_t openFiles_ = 0;
    bool isFirst_ = true;
};

}  // namespace

void writeCsv(const SessionRecord& session, std::ostream& target) {
    target << "time,t,thread,event,text,result,mode,tunnel,file,details\r\n";
    std::unordered_map<const std::string*, std::string> rows;  // polls are many, and the same
    session.data().forEach([&](std::int64_t time, const std::string& body) {
        const std::optional<std::int64_t> wall = session.wallAt(time);
        std::string& row = rows[&body];
        if (row.empty()) {
            row = rowOf(body);
        }
        target << (wall ? momentText(std::chrono::milliseconds(*wall)) : "") << ","
               << tools::secondsText(time) << row;
    });
}

void writeTraceEvents(const std::vector<const SessionRecord*>& sessions, std::ostream& target) {
    const bool haveClocks = std::all_of(sessions.begin(), sessions.end(),
                                        [](const auto* one) { return one->wallAt(0).has_value(); });
    target << "{\"displayTimeUnit\":\"ms\",\"traceEvents\":[";
    for (std::size_t i = 0; i < sessions.size(); ++i) {
        const SessionRecord& session = *sessions[i];
        const std::int64_t shift =
            haveClocks ? *session.wallAt(0) - *sessions.front()->wallAt(0) : std::int64_t{0};
        TraceEvents events(target, i + 1, shift);
        events.begin(session.title());
        session.data().forEach([&](std::int64_t time, const std::string& body) { events.take(time, body); });
        events.end();
    }
    target << "\n]}\n";
}

}  // namespace session
