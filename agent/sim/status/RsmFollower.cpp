#include "sim/status/RsmFollower.h"

#include "controller/PollingThread.h"
#include "logging/FollowedLines.h"
#include "platform/portable/Number.h"
#include "records/GmtClock.h"
#include "sim/trace/EventFields.h"
#include "status/StateFiles.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iterator>
#include <utility>

namespace sim {

namespace {

constexpr std::string_view kPollingThread = PollingThread::kName;
constexpr int kMostSteps = 1000;  // of looking ahead; far more than there are changes to come

/// What the thread does before its first sleep in a period; false when no poll comes.
bool comesToSleep(RsmState& rsm, std::int64_t now) {
    if (!rsm.polling) {
        rsm.beginPolling();
    }
    if (rsm.endWhenOver(true, now)) {
        return false;
    }
    rsm.restartOrFirstPass(now);
    return true;
}

enum class After : std::uint8_t { goesOn, isTakenOver, ends };

/// One poll of the thread and what it does after it, up to its next sleep.
After poll(RsmState& rsm, std::int64_t now) {
    const bool isPending = rsm.delayedProfilePending;
    for (const RsmState::Step step : RsmState::kAfterPoll) {
        (rsm.*step)(now);
    }
    if (isPending && !rsm.delayedProfilePending) {
        return After::isTakenOver;
    }
    if (rsm.endWhenOver(true, now)) {
        return After::ends;
    }
    rsm.restartOrFirstPass(now);
    return After::goesOn;
}

/// Counts the polls to come that change nothing else; the next one is due at `now`.
std::int64_t skipPolls(RsmState& rsm, std::int64_t now) {
    if (rsm.restartRequested || rsm.activityEntered || rsm.pollingRate < 1) {
        return 0;
    }
    double polls = std::floor(rsm.pollLimit()) - rsm.pollCount - 2.0;
    if (rsm.delayedProfilePending) {
        polls = std::min(polls,
                         std::floor(static_cast<double>(rsm.delayedStartTime - now) / rsm.pollingRate) - 1.0);
    }
    if (polls < 1.0) {
        return 0;
    }
    const auto skipped = static_cast<std::int64_t>(polls);
    rsm.pollCount += static_cast<std::uint32_t>(skipped);
    return skipped;
}

}  // namespace

std::int64_t RsmFollower::wallAt(Instant instant) const {
    return std::chrono::floor<std::chrono::seconds>(instant + wallOffset_).count();
}

void RsmFollower::onEvent(const Event& event) {
    latest_ = event.time;
    wallOffset_ = event.wall - event.time;
    const std::int64_t now = wallAt(latest_);
    if (event.thread == kPollingThread && !event.isLeftBehind) {
        notePollingThread(event, now);
    }
    if (event.name == "log") {
        noteLine(textOf(event, "text").value_or(""), now);
    } else if (event.name == "audit") {
        noteAudit(textOf(event, "text").value_or(""), now);
    } else if (event.name == "call") {
        noteCall(event);
    } else if (event.name == "thread-start" && textOf(event, "name") == kPollingThread) {
        hasThread_ = numberOf(event, "result") == 0;
    } else if (event.name == "unload") {
        end();
    }
}

void RsmFollower::noteLine(const std::string& line, std::int64_t now) {
    const std::string_view format = lines::kScheduling;
    const std::string_view schedule = format.substr(0, format.find('%'));
    int number = 0;
    if (std::sscanf(line.c_str(), lines::kPollingRate, &number) == 1) {
        rate_ = number;
    } else if (std::sscanf(line.c_str(), lines::kPollingDuration, &number) == 1) {
        rsm_.forcePoll(number, rate_, now);
        polls_ = 0;
    } else if (line == lines::kDisconnecting) {
        rsm_.disconnect(now);
    } else if (line.starts_with(schedule)) {
        const status::StateFiles::Schedule file = status::readStateFiles("", schedulePath_, now).schedule;
        isScheduleUntold_ =
            !file.isRecord() || records::calendarText(file.start).data() != line.substr(schedule.size());
        if (!isScheduleUntold_) {
            rsm_.scheduleDelayedProfile(file.rate, file.start, file.end, file.minutes);
        }
    }
}

/// Of an order that the schedule file does not hold.
void RsmFollower::noteSchedule(const agent::NamedValues& answer) {
    const auto text = [&](std::string_view name) { return valueOf(answer, name).value_or(""); };
    const int minutes = platform::readNumber(text("GracePeriod"));
    const std::string time = text("RSMStartTime").substr(0, sizeof("23:59:59") - 1);
    const std::int64_t start = records::stringToTime(text("RSMStartDate").c_str(), time.c_str());
    rsm_.scheduleDelayedProfile(platform::readNumber(text("PollingRate")), start,
                                start + minutes * records::kSecondsPerMinute, minutes);
}

void RsmFollower::noteCall(const Event& event) {
    const std::string verb = textOf(event, "verb").value_or("");
    const auto isOf = [&verb](std::string_view words) { return verb.starts_with(words); };
    if (numberOf(event, "result") != 0) {
        return;
    }
    if (std::exchange(isScheduleUntold_, false) && isOf("command ScheduleRSM")) {
        noteSchedule(listOf(event, "answer"));
    }
    const bool isLogger = isOf("start logger ");
    if (isLogger || (isOf("start rsm ") && !isConfigured_)) {
        configurationPath_ = verb.substr(verb.find(' ', 6) + 1);
        settings_ = session::readAuditTexts(configurationPath_).settings;
        texts_ = ActivityTexts(settings_);
        isConfigured_ = true;
    }
    if (isOf("start ")) {
        hasEnded_ = false;
        isLoggerStarted_ = isLoggerStarted_ || isLogger;
        isWatching_ = isWatching_ || (isLogger && settings_.rdListner);
    }
    constexpr std::string_view dataSource = "start data-source ";
    if (isOf(dataSource)) {
        schedulePath_ = verb.substr(dataSource.size());
    } else if (isOf("stop logger") || (isOf("stop rsm") && !isLoggerStarted_)) {
        end();
    }
}

void RsmFollower::noteAudit(const std::string& message, std::int64_t now) {
    if (!isConfigured_) {
        return;
    }
    const AuditMeaning meaning = texts_.meaningOf(message.c_str());
    const std::int32_t tunnels = countAfter(meaning.tunnel, tunnels_);
    const std::int32_t files = countAfter(meaning.file, files_);
    const bool isChanged = tunnels != tunnels_ || files != files_;
    tunnels_ = tunnels;
    files_ = files;
    const bool isActive = tunnels_ > 0 || files_ > 0;
    if (!isWatching_ || !isChanged || (isActive && isActivityTold_)) {
        return;
    }
    isActivityTold_ = isActive;
    activitySince_ = now;
    if (rsm_.setRemoteActivity(isActive, now)) {
        polls_ = 0;
    }
}

void RsmFollower::notePollingThread(const Event& event, std::int64_t now) {
    finishPoll(now);
    if (!rsm_.polling && (waits_ || rsm_.isWaiting()) && rsm_.startWhenDue(now)) {
        rsm_.beginPolling();
        polls_ = 0;
    } else if (waits_ && !rsm_.isWaiting()) {
        comesToSleep(rsm_, now);  // an order has come in, be it one without a poll to make
    }
    waits_ = false;
    wake_.reset();
    if (event.name == "sleep") {
        wake_ = event.time + std::chrono::milliseconds(numberOf(event, "ms"));
        waits_ = rsm_.isWaiting() || !comesToSleep(rsm_, now);
    } else if (event.name == "force-poll") {
        ++polls_;
        step_ = std::begin(RsmState::kAfterPoll);
        finishPoll(now);
    } else if (event.name == "thread-end" || event.name == "thread-destroyed") {
        hasThread_ = false;
        const RsmState::State state = rsm_.state();
        if (numberOf(event, "result") == 0 && state != RsmState::State::Idle &&
            state != RsmState::State::Waiting) {
            rsm_.breakOff(now);  // there was no asset to poll, or no poll to make
        }
    }
}

/// Up to a report, which may take its time.
void RsmFollower::finishPoll(std::int64_t now) {
    while (step_ != nullptr) {
        const bool isReported = (rsm_.**step_)(now).report;
        if (++step_ == std::end(RsmState::kAfterPoll)) {
            step_ = nullptr;
            rsm_.endWhenOver(true, now);
        }
        if (isReported) {
            polls_ = 1;  // the module counts the poll for the period that begins
            return;
        }
    }
}

RsmFollower::Outlook RsmFollower::outlook() const {
    RsmState rsm = rsm_;
    Instant at = wake_.value_or(latest_);
    Outlook outlook{0, wallAt(at)};
    for (const RsmState::Step* step = step_; step != nullptr && step != std::end(RsmState::kAfterPoll);
         ++step) {
        (rsm.**step)(wallAt(at));
    }
    if (waits_ && rsm.startWhenDue(wallAt(at))) {
        outlook.isTakenOver = true;
        return outlook;
    }
    if (waits_ || !wake_) {
        if (!comesToSleep(rsm, wallAt(at))) {
            return outlook;
        }
        at += std::chrono::seconds(rsm.pollingRate);
    }
    for (int step = 0; step < kMostSteps; ++step) {
        const std::int64_t skipped = skipPolls(rsm, wallAt(at));
        at += skipped * std::chrono::seconds(rsm.pollingRate);
        outlook.polls += skipped + 1;
        outlook.end = wallAt(at);
        const After after = poll(rsm, outlook.end);
        outlook.isTakenOver = after == After::isTakenOver;
        if (after != After::goesOn) {
            break;
        }
        at += std::chrono::seconds(rsm.pollingRate);
    }
    return outlook;
}

std::int64_t RsmFollower::pollsAfterActivity() const {
    RsmState rsm = rsm_;
    rsm.delayedProfilePending = false;
    const std::int64_t now = wallAt(latest_);
    comesToSleep(rsm, now);
    poll(rsm, now);  // it takes the activity up
    rsm.setRemoteActivity(false, now);
    std::int64_t polls = 0;
    for (int step = 0; step < kMostSteps; ++step) {
        polls += skipPolls(rsm, now) + 1;
        if (poll(rsm, now) != After::goesOn) {
            break;
        }
    }
    return polls;
}

void RsmFollower::end() {
    rsm_ = {};
    step_ = nullptr;
    hasThread_ = waits_ = isScheduleUntold_ = false;
    isConfigured_ = isLoggerStarted_ = isWatching_ = isActivityTold_ = false;
    tunnels_ = files_ = 0;
    wake_.reset();
    hasEnded_ = true;
}

}  // namespace sim
