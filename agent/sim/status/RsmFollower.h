// The module's RSM state, as it follows from what the agent sees.
#pragma once

#include "controller/RsmState.h"
#include "detection/AuditMeaning.h"
#include "session/AuditTexts.h"
#include "sim/trace/Event.h"

#include <cstdint>
#include <optional>
#include <string>

namespace sim {

/// Takes the orders, polls and audit messages of a session through the module's own state. Its times are GMT
/// clock values, unless they are instants of the session. Used by one thread at a time.
class RsmFollower final {
  public:
    /// Force polling as it goes on when nothing else is ordered.
    struct Outlook {
        std::int64_t polls = 0;  ///< up to the last one, or to the one at which a schedule takes over
        std::int64_t end = 0;    ///< when that is made
        bool isTakenOver = false;
    };

    RsmFollower() = default;
    RsmFollower(const RsmFollower&) = delete;
    RsmFollower& operator=(const RsmFollower&) = delete;

    void onEvent(const Event& event);

    const RsmState& state() const { return rsm_; }
    /// Without it nothing polls, whatever was ordered.
    bool hasThread() const { return hasThread_; }
    std::int64_t pollsInPeriod() const { return polls_; }
    std::int64_t activitySince() const { return activitySince_; }
    /// Of the last start, also when the agent has stopped since.
    const std::string& resumePath() const { return settings_.resumeStatusFile; }
    const std::string& configurationPath() const { return configurationPath_; }
    const std::string& schedulePath() const { return schedulePath_; }
    /// A stop has ended all of the module, or a kill; until the next start.
    bool hasEnded() const { return hasEnded_; }

    /// While something polls, and no remote activity keeps it polling.
    Outlook outlook() const;
    /// The polls that follow once the remote activity, which goes on, has ended.
    std::int64_t pollsAfterActivity() const;

  private:
    void noteLine(const std::string& line, std::int64_t now);
    void noteCall(const Event& event);
    void noteAudit(const std::string& message, std::int64_t now);
    void noteSchedule(const agent::NamedValues& answer);
    void notePollingThread(const Event& event, std::int64_t now);
    void finishPoll(std::int64_t now);
    void end();
    std::int64_t wallAt(Instant instant) const;

    RsmState rsm_;
    bool hasThread_ = false;
    bool hasEnded_ = false;
    const RsmState::Step* step_ = nullptr;  ///< to come after a poll, when the one before it made a report
    bool waits_ = false;                    ///< the thread sleeps in its wait for a schedule
    std::optional<Instant> wake_;           ///< when its sleep is over
    Instant latest_{0};                     ///< event
    std::chrono::microseconds wallOffset_{0};
    std::int64_t polls_ = 0;         ///< in this period
    int rate_ = 0;                   ///< of the order that is being told of
    bool isScheduleUntold_ = false;  ///< one was ordered that the schedule file does not hold

    bool isConfigured_ = false;
    bool isLoggerStarted_ = false;
    bool isWatching_ = false;  ///< remote detection is attached
    config::Settings settings_;
    std::string configurationPath_;
    ActivityTexts texts_;  ///< of these
    std::string schedulePath_;
    std::int32_t tunnels_ = 0;
    std::int32_t files_ = 0;
    bool isActivityTold_ = false;
    std::int64_t activitySince_ = 0;
};

}  // namespace sim
