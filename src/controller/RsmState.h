// The RSM state and all of its transitions. A plain value: no lock, clock, thread, file or agent is in it,
// and the present (a GMT clock value) is an argument, so a whole session takes microseconds in a test.
//
//   State               Mode  Polls  What else holds
//   Idle                0     no     grace period 0, rate 0, no start of RSM
//   Waiting             0     no     the same; a delayed profile is pending, at its start RSM begins
//   Grace               1     yes    no remote activity
//   GraceWithActivity   1     yes    remote activity that began before force polling, or behind its last poll; it
//                                    keeps RSM polling
//   Activity            2     yes    remote activity that began during force polling; when it has ended, one more
//                                    poll comes before its grace period
//   Ending              0     yes    after a disconnect: grace period 0; the end test comes after one more poll
//   EndingWithActivity  0     yes    remote activity that began after the disconnect; it keeps RSM polling
//
//   "Polls" counts from the order, or the start of a delayed profile, to the end test.
//
//   From                                        To                  By
//   Idle                                        Waiting             scheduleDelayedProfile
//   Idle, Waiting, Ending                       Grace               forcePoll
//   Idle, Waiting, EndingWithActivity           GraceWithActivity   forcePoll
//   Waiting, Ending, Activity                   Grace               startWhenDue
//   Waiting, EndingWithActivity, Activity       GraceWithActivity   startWhenDue
//   Grace                                       Activity            setRemoteActivity, grace period not 0
//   Grace                                       GraceWithActivity   setRemoteActivity, grace period 0
//   GraceWithActivity                           Grace               setRemoteActivity
//   Ending                                      EndingWithActivity  setRemoteActivity
//   EndingWithActivity                          Ending              setRemoteActivity
//   Activity                                    Grace               endActivity, takeOverDueProfileAfterActivity
//   Grace, GraceWithActivity                    Ending              disconnect
//   Grace, GraceWithActivity, Activity          Idle, Waiting       endWhenOver, breakOff
//   Ending, EndingWithActivity                  Idle, Waiting       endWhenOver, breakOff
//
// All else leaves the state where it is: forcePoll starts a period afresh, scheduleDelayedProfile replaces what
// waits, takeOverDueProfile makes it the period that runs, markLastPoll and the others count.
//
// Orders come from host threads at any time; the operations of the polling loop are called by the one polling
// thread. Whoever shares a state among threads calls each operation under one lock.
#pragma once

#include <cstdint>

/// RSM modes, as numbers of the controller's operations.
namespace rsm {
constexpr std::int32_t kNotActive = 0;
constexpr std::int32_t kForcePollGrace = 1;
constexpr std::int32_t kForcePollActivity = 2;
/// As the enterprise is told.
constexpr const char* nameOf(std::int32_t mode) noexcept {
    return mode == kForcePollGrace      ? "FORCE_POLL_GRACE"
           : mode == kForcePollActivity ? "FORCE_POLL_ACTIVITY"
                                        : "NOT_ACTIVE";
}
}  // namespace rsm

struct RsmState {
    bool remoteActivity = false;           ///< going on, as remote detection tells
    bool activityEntered = false;          ///< began during force polling, not yet taken up by the loop
    std::int32_t pollingRate = 0;          ///< seconds
    double gracePeriod = 0.0;              ///< minutes
    std::int32_t activityGracePeriod = 0;  ///< minutes of polling after the end of remote activity
    bool inGracePeriod = false;            ///< no remote activity taken up in the current grace period
    bool restartRequested = false;         ///< the polling loop counts afresh from its next pass on
    bool delayedProfilePending = false;
    double delayedGracePeriod = 0.0;              ///< minutes
    double delayedPollingRate = 0.0;              ///< seconds
    std::int64_t delayedStartTime = 0;            ///< times are GMT clock values; 0 means no time
    std::int64_t delayedEndTime = 0;              ///< outlives the pending profile, for the schedule clean-up
    std::int32_t delayedActivityGracePeriod = 0;  ///< minutes
    std::int64_t modeStartTime = 0;
    std::int64_t rsmStartTime = 0;
    std::int32_t rsmMode = rsm::kNotActive;
    bool polling = false;         ///< the loop has begun and not come to its end test
    std::uint32_t pollCount = 0;  ///< polls made in the current grace period; wraps around

    // ---- Orders

    /// Force polling for `minutes` at `rate` seconds, from now; one that runs starts afresh.
    void forcePoll(std::int32_t minutes, std::int32_t rate, std::int64_t now) noexcept;
    /// What a disconnect found: the mode before it. Only `kForcePollGrace` ends, after one more poll.
    std::int32_t disconnect(std::int64_t now) noexcept;
    /// An RSM that is to start later replaces one that still waits.
    void scheduleDelayedProfile(std::int32_t rate, std::int64_t start, std::int64_t end,
                                std::int32_t activityGraceMinutes) noexcept;
    /// Remote activity begins or has ended. True when that entered activity mode, to be reported.
    bool setRemoteActivity(bool active, std::int64_t now) noexcept;
    void enterRemoteActivityMode(std::int64_t now) noexcept {
        rsmMode = rsm::kForcePollActivity;
        modeStartTime = now;
    }

    /// The delayed profile becomes the active one; the mode stays, or becomes `mode` (anything but 1 and 2
    /// counts as 0) with the scheduled start as start of RSM.
    void convertDelayedToNormal(std::int64_t now) noexcept;
    void convertDelayedToNormal(std::int32_t mode, std::int64_t now) noexcept;

    // ---- The polling loop

    /// What a step asks for after it has changed the state.
    struct Effects {
        bool report = false;
        bool save = false;
    };
    using Step = Effects (RsmState::*)(std::int64_t now) noexcept;

    /// A delayed profile waits, and there is no order to look at first, be it one that was taken back.
    bool isWaiting() const noexcept {
        return delayedProfilePending && rsmMode == rsm::kNotActive && !restartRequested;
    }
    bool isDelayedStartDue(std::int64_t now) const noexcept { return delayedStartTime <= now; }
    /// In the waiting phase: true when the delayed profile has become the active one, its start having come.
    bool startWhenDue(std::int64_t now) noexcept;
    void beginPolling() noexcept {
        pollCount = 0;
        polling = true;
    }
    /// The end test: true when force polling ends by it, because it is over or because polls cannot be made.
    bool endWhenOver(bool canPoll, std::int64_t now) noexcept;
    /// Force polling ends at once, as it does when the thread can go on no more.
    void breakOff(std::int64_t now) noexcept;
    /// Neither a delayed profile nor a new order is left for the thread.
    bool isDone() const noexcept { return !delayedProfilePending && !restartRequested; }

    /// Before the sleep of a pass.
    Effects restartOrFirstPass(std::int64_t now) noexcept;
    // After the poll of a pass, in this order.
    Effects takeUpActivity(std::int64_t now) noexcept;
    Effects endActivity(std::int64_t now) noexcept;
    Effects holdForActivity(std::int64_t now) noexcept;
    Effects markLastPoll(std::int64_t now) noexcept;
    Effects takeOverDueProfile(std::int64_t now) noexcept;
    Effects takeOverDueProfileAfterActivity(std::int64_t now) noexcept;
    Effects countPoll(std::int64_t now) noexcept;

    static constexpr Step kAfterPoll[] = {
        &RsmState::takeUpActivity, &RsmState::endActivity,        &RsmState::holdForActivity,
        &RsmState::markLastPoll,   &RsmState::takeOverDueProfile, &RsmState::takeOverDueProfileAfterActivity,
        &RsmState::countPoll};

    enum class State { Idle, Waiting, Grace, GraceWithActivity, Activity, Ending, EndingWithActivity };
    State state() const noexcept;
    /// What the table says of its state holds.
    bool isConsistent() const noexcept;

    /// The enterprise would be told the same of both.
    static bool isSameProfile(const RsmState& one, const RsmState& other) noexcept;

    /// Whole minutes of the grace period.
    std::int32_t wholeMinutes() const noexcept;
    /// Polls that the grace period allows.
    double pollLimit() const noexcept { return pollsPerMinute() * gracePeriod; }

  private:
    bool isDueWhilePolling(std::int64_t now) const noexcept {
        return delayedProfilePending && delayedStartTime < now && rsmMode != rsm::kNotActive;
    }
    std::uint32_t pollsPerMinute() const noexcept;
};
