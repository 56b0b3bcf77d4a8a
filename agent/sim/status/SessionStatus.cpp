#include "sim/status/SessionStatus.h"

#include "platform/Number.h"
#include "scheduling/GmtClock.h"
#include "sim/Calendar.h"
#include "sim/EventFields.h"
#include "sim/report/AuditTexts.h"
#include "sim/status/Moment.h"
#include "sim/status/StateFiles.h"
#include "sim/status/StatusJson.h"

#include <algorithm>
#include <cstdio>

namespace sim {

namespace {

using nlohmann::ordered_json;

constexpr std::string_view kOff = "NOT_ACTIVE";
constexpr std::string_view kGrace = "FORCE_POLL_GRACE";
constexpr std::string_view kActivity = "FORCE_POLL_ACTIVITY";

/// A profile's date, "2026-01-03 GMT 10:00:05" with the day before the month; none for "0".
std::optional<std::int64_t> profileMoment(const std::string& text) {
    int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0, length = 0;
    std::sscanf(text.c_str(), "%4d-%2d-%2d GMT %2d:%2d:%2d%n", &year, &day, &month, &hour, &minute, &second,
                &length);
    const bool isWhole = length > 0 && static_cast<std::size_t>(length) == text.size();
    return isWhole ? momentOf(year, month, day, hour, minute, second) : std::nullopt;
}

std::string counted(std::int64_t number, const char* thing) {
    return std::to_string(number) + " " + thing + (number == 1 ? "" : "s");
}

}  // namespace

void SessionStatus::onEvent(const Event& event) noexcept {
    const std::lock_guard lock(mutex_);
    const std::int64_t at = std::chrono::floor<std::chrono::seconds>(event.wall).count();
    if (event.name == "call") {
        noteCall(event, at);
    } else if (event.name == "update-asset") {
        noteReport(event, at);
    } else if (event.name == "force-poll") {
        ++polls_;
        ++stretch_.polls;
        lastPoll_ = at;
    } else if (event.name == "thread-destroyed" || (event.name == "unload" && agent_ == Agent::runs)) {
        // A thread is destroyed by a stop that has not come back yet, or by a kill.
        agent_ = Agent::killed;
        maybeKilled_ = event.name != "unload";
        changedAt_ = at;
        stretch_ = {};
        schedule_.reset();
    }
}

void SessionStatus::noteCall(const Event& event, std::int64_t at) {
    const std::string verb = textOf(event, "verb").value_or("");
    const bool succeeded = numberOf(event, "result") == 0;
    if (verb.starts_with("stop ")) {
        if (maybeKilled_ || verb == "stop logger") {
            agent_ = Agent::stopped;
            changedAt_ = at;
            stretch_ = {};
            schedule_.reset();
        }
    } else if (verb.starts_with("start ") && succeeded) {
        agent_ = Agent::runs;
        for (const std::string_view family : {"start rsm ", "start logger "}) {
            if (verb.starts_with(family)) {
                resumePath_ = readAuditTexts(verb.substr(family.size())).settings.resumeStatusFile;
            }
        }
        constexpr std::string_view dataSource = "start data-source ";
        if (verb.starts_with(dataSource)) {
            schedulePath_ = verb.substr(dataSource.size());
        }
    } else if (verb.starts_with("disconnect") || verb.starts_with("command ExitRSM")) {
        ending_ = succeeded && stretch_.mode == kGrace;
    }
    maybeKilled_ = false;
}

void SessionStatus::noteReport(const Event& event, std::int64_t at) {
    const agent::NamedValues list = listOf(event, "properties");
    const auto property = [&](std::string_view name) { return valueOf(list, name).value_or(""); };
    report_ = Report{at, numberOf(event, "result") == 0, ordered_json::object()};
    for (const auto& [name, value] : list) {
        report_->properties[name] = value ? ordered_json(*value) : ordered_json(nullptr);
    }
    schedule_.reset();
    if (const auto start = profileMoment(property("RSM_DELAY_PROFILE_START_TIME"))) {
        schedule_ = Schedule{*start, platform::readNumber(property("RSM_DELAY_PROFILE_GRACE_PERIOD")),
                             platform::readNumber(property("RSM_DELAY_PROFILE_FORCED_POLLING_RATE"))};
    }
    Stretch next{property("RSM_MODE"),
                 at,
                 platform::readNumber(property("RSM_GRACE_PERIOD")),
                 platform::readNumber(property("RSM_FORCED_POLLING_RATE")),
                 0,
                 0};
    if (next.mode == stretch_.mode && next.minutes == stretch_.minutes && next.rate == stretch_.rate &&
        property("RSM_MODE_START_TIME").find(gmtText(at).substr(11, 8)) == std::string::npos) {
        return;  // something else was to be told, a schedule for instance
    }
    const std::int64_t wholePolls =
        next.rate > 0 ? scheduling::kSecondsPerMinute / next.rate * next.minutes : 0;
    // An order takes effect after the sleep that goes on, with one poll more; the polling thread's own
    // changes come between two polls, with the first one counted already.
    const bool wasPolling = stretch_.mode != kOff;
    next.limit = !wasPolling              ? wholePolls
                 : event.thread == "host" ? wholePolls + 1
                                          : std::max<std::int64_t>(wholePolls - 1, 0);
    if (next.mode == kActivity && stretch_.mode != kActivity) {
        activitySince_ = at;
    }
    stretch_ = next;
    ending_ = false;
}

bool SessionStatus::runs() const {
    return stretch_.mode == kGrace || stretch_.mode == kActivity;
}

std::int64_t SessionStatus::pollsLeft() const {
    return ending_ ? 1 : std::max<std::int64_t>(stretch_.limit - stretch_.polls, 0);
}

std::int64_t SessionStatus::until() const {
    return std::max(lastPoll_.value_or(0), stretch_.since) + pollsLeft() * stretch_.rate;
}

std::string SessionStatus::startText(std::int64_t now) const {
    return readStateFiles(resumePath_, schedulePath_, now).startText(now);
}

std::string SessionStatus::sentence(std::int64_t now) const {
    switch (agent_) {
        case Agent::notStarted:
            return "The agent has not started the module yet.";
        case Agent::killed:
            return "The agent was killed at " + gmtText(changedAt_) + ". " + startText(now);
        case Agent::stopped:
            return "The agent stopped at " + gmtText(changedAt_) + ". " + startText(now);
        case Agent::runs:
            break;
    }
    const std::string pace = "one poll every " + std::to_string(stretch_.rate) + " s";
    if (stretch_.mode == kActivity) {
        return "RSM goes on as long as the remote activity that began at " + gmtText(activitySince_) + ", " +
               pace + ", and then for " + counted(stretch_.minutes, "minute") + " more.";
    }
    if (ending_) {
        return "RSM was disconnected and ends after one more poll, at about " + gmtText(until()) + ".";
    }
    if (runs()) {
        return "RSM runs until about " + gmtText(until()) + ", " + pace + ": " +
               counted(stretch_.polls, "poll") + " made, " + std::to_string(pollsLeft()) + " to come.";
    }
    if (schedule_) {
        return "RSM is off and waits for its schedule of " + scheduleText() + ".";
    }
    return "RSM is off.";
}

std::string SessionStatus::scheduleText() const {
    return momentText(schedule_->start) + ": " + counted(schedule_->minutes, "minute") +
           " at one poll every " + std::to_string(schedule_->rate) + " s";
}

std::string SessionStatus::text(std::int64_t now) const {
    const std::lock_guard lock(mutex_);
    std::string text = sentence(now) + "\n";
    const auto add = [&text](const char* label, const std::string& value) {
        text += "  " + std::string(label) +
                std::string(15 - std::min<std::size_t>(std::string_view(label).size(), 14), ' ') + value +
                "\n";
    };
    add("now", momentText(now));
    add("mode", stretch_.mode + (stretch_.since > 0 ? " since " + momentText(stretch_.since) : ""));
    if (runs()) {
        add("until", stretch_.mode == kActivity ? "the remote activity is over" : momentText(until()));
    }
    add("polls", std::to_string(polls_) + " made" +
                     (stretch_.mode == kGrace ? ", " + std::to_string(pollsLeft()) + " to come" : "") +
                     (lastPoll_ ? ", the last one at " + momentText(*lastPoll_) : ""));
    add("activity", stretch_.mode == kActivity ? "since " + momentText(activitySince_) : "none");
    add("next schedule", schedule_ ? scheduleText() : "none");
    add("restart", startText(now));
    add("last report",
        !report_ ? "none" : (report_->accepted ? "accepted at " : "refused at ") + momentText(report_->at));
    return text;
}

std::string SessionStatus::json(std::int64_t now) const {
    const std::lock_guard lock(mutex_);
    static constexpr const char* agents[] = {"not started", "runs", "stopped", "killed"};
    const auto moment = [](bool isKnown, std::int64_t at) {
        return isKnown ? momentJson(at) : ordered_json(nullptr);
    };
    ordered_json json = {
        {"sentence", sentence(now)},
        {"now", momentJson(now)},
        {"agent", agents[static_cast<std::size_t>(agent_)]},
        {"mode", stretch_.mode},
        {"since", moment(stretch_.since > 0, stretch_.since)},
        {"until", moment(stretch_.mode == kGrace, until())},
        {"polls",
         {{"made", polls_},
          {"made_in_this_period", runs() ? ordered_json(stretch_.polls) : ordered_json(nullptr)},
          {"to_come", stretch_.mode == kGrace ? ordered_json(pollsLeft()) : ordered_json(nullptr)},
          {"rate", runs() ? ordered_json(stretch_.rate) : ordered_json(nullptr)},
          {"last", moment(lastPoll_.has_value(), lastPoll_.value_or(0))}}},
        {"activity_since", moment(stretch_.mode == kActivity, activitySince_)},
        {"next_schedule", nullptr},
        {"last_report", nullptr},
    };
    if (schedule_) {
        json["next_schedule"] = {{"start", momentJson(schedule_->start)},
                                 {"minutes", schedule_->minutes},
                                 {"rate", schedule_->rate}};
    }
    if (report_) {
        json["last_report"] = {{"at", momentJson(report_->at)},
                               {"accepted", report_->accepted},
                               {"properties", report_->properties}};
    }
    json.update(stateFilesJson(readStateFiles(resumePath_, schedulePath_, now), now));
    return dumped(json);
}

}  // namespace sim
