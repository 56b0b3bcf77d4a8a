#pragma once

#include "controller/PollingThread.h"
#include "controller/ProfileReport.h"
#include "controller/RsmState.h"
#include "platform/portable/Lock.h"
#include "platform/portable/Role.h"
#include "records/GmtClock.h"

#include <cstdint>
#include <optional>
#include <utility>

/// RSM as the threads share it: the state, which thread polls, and what the enterprise knows of it, all under
/// one lock. The state cannot be reached without that. Counted: a report that takes long outlives the
/// controller. Any thread.
class SharedRsm final {
  public:
    SharedRsm() = default;
    SharedRsm(const SharedRsm&) = delete;
    SharedRsm& operator=(const SharedRsm&) = delete;

    int creationError() const noexcept;
    PollingThread& thread() noexcept { return thread_; }
    ProfileReport& profile() noexcept { return profile_; }

    /// Looks at or changes the state: `use(state, now)`, which calls nothing of the agent's or the system's.
    template <typename Use>
    auto look(Use&& use) {
        const std::int64_t now = records::gmtNow();
        const platform::Lock lock(lock_);
        return std::forward<Use>(use)(state_, now);
    }
    /// The same for the polling thread of this number. False, and nothing is done, when it was dropped.
    template <typename Use>
    bool lookAs(PollingThread::Number number, Use&& use) {
        return look([&](RsmState& state, std::int64_t now) {
            const bool isTheirs = thread_.has(number);
            if (isTheirs) {
                std::forward<Use>(use)(state, now);
            }
            return isTheirs;
        });
    }
    /// The last look of the polling thread of this number: when it is done, and no report is left to it, orders
    /// count on it no more. An order comes before that, and is seen, or finds the thread leaving. True when the
    /// thread has to end.
    template <typename IsDone>
    bool leaveWhen(PollingThread::Number number, IsDone&& isDone) {
        return look([&](RsmState& state, std::int64_t /*now*/) {
            const bool leaves = !thread_.has(number) || (isDone(state) && !isReportLeft());
            if (leaves) {
                thread_.setLeaving(number);
            }
            return leaves;
        });
    }

    /// Tells the enterprise of the state as it is now, and blocks until it answers; not when another thread is
    /// telling, which then goes on until what it told last is what holds. A thread of the host's leaves what
    /// came in meanwhile to the polling thread, if there is one; `number` says that this is the polling thread.
    void report(PollingThread::Number number = 0);
    /// Something is to be told that no thread is telling. To be asked in a look.
    bool isReportLeft();

  private:
    bool isUntold() const REQUIRES(lock_);

    platform::Mutex lock_;
    RsmState state_ GUARDED_BY(lock_);
    std::optional<RsmState> asked_ GUARDED_BY(lock_);  ///< what the enterprise is to be told
    std::optional<RsmState> told_ GUARDED_BY(lock_);   ///< what it was told last; none while it is being told
    platform::Role reporter_;  ///< taken and, but by a thread that is unwound, given back under the lock
    PollingThread thread_{lock_};
    ProfileReport profile_;
};
