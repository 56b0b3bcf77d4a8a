#include "sim/status/SessionStatus.h"

#include "records/GmtClock.h"
#include "sim/trace/EventFields.h"
#include "status/Metrics.h"
#include "status/Moment.h"
#include "status/StateFiles.h"
#include "status/StatusJson.h"

#include <algorithm>

namespace sim {

namespace {

using namespace status;
using nlohmann::ordered_json;
using State = RsmState::State;

std::string counted(std::int64_t number, const char* thing) {
    return std::to_string(number) + " " + thing + (number == 1 ? "" : "s");
}

std::string lengthText(std::int64_t seconds) {
    const std::int64_t minutes = seconds / records::kSecondsPerMinute;
    const std::int64_t rest = seconds % records::kSecondsPerMinute;
    return rest == 0 ? counted(minutes, "minute")
                     : (minutes == 0 ? "" : std::to_string(minutes) + " min ") + std::to_string(rest) + " s";
}

}  // namespace

void SessionStatus::onEvent(const Event& event) noexcept {
    const std::lock_guard lock(mutex_);
    const std::int64_t at = std::chrono::floor<std::chrono::seconds>(event.wall).count();
    const bool hadEnded = rsm_.hasEnded();
    rsm_.onEvent(event);
    if (event.name == "unload" && agent_ == Agent::runs) {
        agent_ = Agent::killed;
        changedAt_ = at;
    } else if (event.name == "call" && rsm_.hasEnded() && !hadEnded) {
        agent_ = Agent::stopped;
        changedAt_ = at;
    } else if (event.name == "call" && numberOf(event, "result") == 0 &&
               textOf(event, "verb").value_or("").starts_with("start ")) {
        agent_ = Agent::runs;
    } else if (event.name == "force-poll") {
        ++polls_;
        lastPoll_ = at;
    } else if (event.name == "update-asset") {
        report_ = Report{at, numberOf(event, "result") == 0, ordered_json::object()};
        for (const auto& [name, value] : listOf(event, "properties")) {
            report_->properties[name] = value ? ordered_json(*value) : ordered_json(nullptr);
        }
    }
}

bool SessionStatus::isPolling() const {
    const State state = rsm_.state().state();
    return agent_ == Agent::runs && rsm_.hasThread() && state != State::Idle && state != State::Waiting;
}

std::string SessionStatus::startText(std::int64_t now) const {
    return readStateFiles(rsm_.resumePath(), rsm_.schedulePath(), now).startText(now);
}

SessionStatus::Answer SessionStatus::answer(std::int64_t now) const {
    Answer answer;
    // At a useless rate nothing keeps it polling.
    if (isPolling() && (!rsm_.state().remoteActivity || rsm_.state().pollingRate < 1)) {
        answer.outlook = rsm_.outlook();
    }
    answer.sentence = sentence(answer.outlook, now);
    return answer;
}

std::string SessionStatus::sentence(const std::optional<RsmFollower::Outlook>& outlook,
                                    std::int64_t now) const {
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
    const RsmState& rsm = rsm_.state();
    const bool isOff = rsm.state() == State::Idle || rsm.state() == State::Waiting;
    const std::string thread = rsm_.hasThread() ? "" : ", but there is no thread for it until another order";
    if (isOff) {
        return rsm.delayedProfilePending
                   ? "RSM is off and waits for its schedule of " + scheduleText() + thread +
                         (rsm.remoteActivity ? "; remote activity that goes on keeps it polling longer."
                                             : ".")
                   : "RSM is off.";
    }
    const std::string pace = "one poll every " + std::to_string(rsm.pollingRate) + " s";
    if (!rsm_.hasThread()) {
        return "RSM was ordered, " + pace + thread + ".";
    }
    const bool isDisconnected = rsm.rsmMode == rsm::kNotActive;
    const std::string schedule =
        rsm.delayedProfilePending ? " Next comes its schedule of " + scheduleText() + "." : "";
    if (!outlook) {
        const std::int64_t polls = rsm_.pollsAfterActivity();
        return std::string(isDisconnected ? "RSM was disconnected, but goes on" : "RSM goes on") +
               " as long as the remote activity that began at " + gmtText(rsm_.activitySince()) + ", " +
               pace + ", and then for " + lengthText(polls * rsm.pollingRate) +
               " more: " + counted(polls, "poll") + "." + schedule;
    }
    if (isDisconnected) {
        return std::string("RSM was disconnected and ends ") +
               (outlook->polls == 0 ? "without a poll" : "after one more poll") + ", at about " +
               gmtText(outlook->end) + "." + schedule;
    }
    return "RSM runs until about " + gmtText(outlook->end) +
           (outlook->isTakenOver ? ", when its schedule of " + scheduleText() + ", takes over; until then "
                                 : ", ") +
           pace + ": " + counted(rsm_.pollsInPeriod(), "poll") + " made, " + std::to_string(outlook->polls) +
           " to come." + (outlook->isTakenOver ? "" : schedule);
}

std::string SessionStatus::scheduleText() const {
    const RsmState& rsm = rsm_.state();
    return momentText(rsm.delayedStartTime) + ": " +
           paceText(static_cast<std::int64_t>(rsm.delayedGracePeriod),
                    static_cast<std::int64_t>(rsm.delayedPollingRate));
}

std::string SessionStatus::text(std::int64_t now) const {
    const std::lock_guard lock(mutex_);
    const auto [sentence, outlook] = answer(now);
    const RsmState& rsm = rsm_.state();
    std::string text = sentence + "\n";
    const auto add = [&text](const char* label, const std::string& value) {
        text += "  " + std::string(label) +
                std::string(15 - std::min<std::size_t>(std::string_view(label).size(), 14), ' ') + value +
                "\n";
    };
    add("now", momentText(now));
    add("mode",
        rsm::nameOf(rsm.rsmMode) + (rsm.modeStartTime > 0 ? " since " + momentText(rsm.modeStartTime) : ""));
    if (isPolling()) {
        add("until", outlook ? momentText(outlook->end) : "the remote activity is over");
    }
    add("polls", std::to_string(polls_) + " made" +
                     (outlook ? ", " + std::to_string(outlook->polls) + " to come" : "") +
                     (lastPoll_ ? ", the last one at " + momentText(*lastPoll_) : ""));
    add("activity", rsm.remoteActivity ? "since " + momentText(rsm_.activitySince()) : "none");
    add("next schedule", rsm.delayedProfilePending ? scheduleText() : "none");
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
    const auto number = [](bool isKnown, std::int64_t value) {
        return isKnown ? ordered_json(value) : ordered_json(nullptr);
    };
    const auto [sentence, outlook] = answer(now);
    const RsmState& rsm = rsm_.state();
    ordered_json json = {
        {"sentence", sentence},
        {"now", momentJson(now)},
        {"agent", agents[static_cast<std::size_t>(agent_)]},
        {"mode", rsm::nameOf(rsm.rsmMode)},
        {"since", moment(rsm.modeStartTime > 0, rsm.modeStartTime)},
        {"until", moment(outlook.has_value(), outlook ? outlook->end : 0)},
        {"polls",
         {{"made", polls_},
          {"made_in_this_period", number(isPolling(), rsm_.pollsInPeriod())},
          {"to_come", number(outlook.has_value(), outlook ? outlook->polls : 0)},
          {"rate", number(isPolling(), rsm.pollingRate)},
          {"last", moment(lastPoll_.has_value(), lastPoll_.value_or(0))}}},
        {"activity_since", moment(rsm.remoteActivity, rsm_.activitySince())},
        {"next_schedule", nullptr},
        {"last_report", nullptr},
    };
    if (rsm.delayedProfilePending) {
        json["next_schedule"] = {{"start", momentJson(rsm.delayedStartTime)},
                                 {"minutes", static_cast<std::int64_t>(rsm.delayedGracePeriod)},
                                 {"rate", static_cast<std::int64_t>(rsm.delayedPollingRate)}};
    }
    if (report_) {
        json["last_report"] = {{"at", momentJson(report_->at)},
                               {"accepted", report_->accepted},
                               {"properties", report_->properties}};
    }
    json.update(stateFilesJson(readStateFiles(rsm_.resumePath(), rsm_.schedulePath(), now), now));
    return dumped(json);
}

std::string SessionStatus::metrics(std::int64_t now) const {
    const std::lock_guard lock(mutex_);
    const RsmState& rsm = rsm_.state();
    const auto outlook = answer(now).outlook;
    Metrics metrics =
        fileMetrics(readConfiguredFiles(rsm_.configurationPath(), rsm_.schedulePath(), now), now);
    metrics.mode = rsm.rsmMode;
    metrics.ends = outlook ? std::optional(outlook->end) : std::nullopt;
    metrics.polls = polls_;
    if (rsm.rsmStartTime > 0) {
        metrics.began = rsm.rsmStartTime;
    }
    return metricsText(metrics);
}

}  // namespace sim
