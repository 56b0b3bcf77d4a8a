#pragma once

#include "controller/SharedRsm.h"
#include "platform/Mutex.h"
#include "records/StateFile.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

class ConfigHandler;
class ScheduleRSMHandler;
namespace KRX::Messaging {
class SerializableString;
}

/// An order to poll, as its giver may put it together with what else belongs to it.
struct RsmOrder {
    std::int32_t pollingRate = 0;  ///< seconds
    std::int32_t minutes = 0;      ///< of polling, or, with a start, of the activity grace period
    std::int64_t start = 0;        ///< GMT clock values; 0: at once
    std::int64_t end = 0;
};

/// The RSM controller, of which there is one: runs the force-polling thread, changes the RSM state on behalf
/// of all callers, reports the profile to the enterprise and keeps the resume state file.
///
/// Threads: all operations may be called from any thread by whoever holds a reference; the controller goes
/// with its last one. No lock is held while the host or the agent is called, but for `createThread`, which
/// lets one caller at a time start the thread.
class ZephanRSMSingleTon final {
  public:
    using Reference = std::shared_ptr<ZephanRSMSingleTon>;

    ZephanRSMSingleTon(const ZephanRSMSingleTon&) = delete;
    ZephanRSMSingleTon& operator=(const ZephanRSMSingleTon&) = delete;
    ~ZephanRSMSingleTon();

    // ---- Core (ZephanRSMSingleTon.cpp)
    /// The controller, made on first use; null when it cannot be made (a later call tries again).
    static Reference getInstance();
    /// The controller, or null; never makes one.
    static Reference existing() noexcept;
    /// Starts no polling thread any more, ends the one there is (waits at most 3000 ms, then drops it), and
    /// takes the controller away from newcomers. What it owns goes with its last user.
    static void destroyInstance();
    /// A stop of this controller has begun.
    bool isStopping() const { return rsm_->thread().isClosing(); }

    /// Keeps the host's service agent (not owned) unless one is held. A null agent changes nothing.
    void setServiceAgent(KRX::ServiceAgentNS::ServiceAgent* serviceAgent) {
        rsm_->profile().setServiceAgent(serviceAgent);
    }
    KRX::ServiceAgentNS::ServiceAgent* getServiceAgent() const noexcept {
        return rsm_->profile().getServiceAgent();
    }
    /// Makes the schedule handler unless there is one or the path is null; true when this call made it, whose
    /// caller then lets it report. Defined beside the handler, of which the controller knows its name alone.
    bool createScheduleHandler(const char* scheduleFilePath);
    ScheduleRSMHandler* getScheduleHandler() const noexcept { return scheduleHandler_; }
    /// Null only when its memory could not be had.
    ConfigHandler* getConfigHandler() const noexcept { return configHandler_.get(); }
    /// What the threads share, for one that keeps no controller while it reports.
    const std::shared_ptr<SharedRsm>& rsm() const noexcept { return rsm_; }

    std::int32_t getRSMMode() const { return state().rsmMode; }
    void setGracePeriod(double minutes) {
        rsm_->look([&](RsmState& state, std::int64_t /*now*/) { state.gracePeriod = minutes; });
    }
    void setPollingRate(std::int32_t seconds) {
        rsm_->look([&](RsmState& state, std::int64_t /*now*/) { state.pollingRate = seconds; });
    }
    std::int64_t getDelayedEndTime() const { return state().delayedEndTime; }
    std::string getResumeFilePath() const {
        const platform::Lock lock(resumeFileLock_);
        return resumeFile_.path();
    }
    void setResumeFilePath(const std::string& path) {
        const platform::Lock lock(resumeFileLock_);
        resumeFile_.setPath(path);
    }

    // ---- Orders (Orders.cpp)
    /// Starts force polling or, while it runs, starts it afresh with the new values. `currentPollInterval`
    /// receives the asset's own poll interval in seconds, all bits set without an asset. 0 when a thread
    /// polls, -1 when none could be started (the values stay set).
    std::int8_t ForcePoll(std::int32_t minutes, std::int32_t pollingRateSeconds,
                          std::uint32_t& currentPollInterval);
    /// Ends force polling after the next poll unless remote activity is going on; the outcome is put into
    /// `result`. Always 0.
    std::int8_t Disconnect(const char* memberName, KRX::Messaging::SerializableString& result);
    /// Stores an RSM that is to start later, replacing an earlier one that still waits. Start and end are GMT
    /// clock values. 0, or -1 when no thread could be started or there is no service agent to report to.
    std::int8_t scheduleDelayedProfile(std::int32_t pollingRateSeconds, std::int64_t start, std::int64_t end,
                                       std::int32_t activityGraceMinutes);
    /// Tells that remote activity begins or has ended. Blocks while the enterprise is told that it begins.
    void setRemoteActivity(bool active);
    /// The two halves of an order. The first one changes the state, calls nothing else and waits for nothing.
    void take(const RsmOrder& order);
    /// The second one, with no lock held: lines, thread, report. As `ForcePoll` or `scheduleDelayedProfile`.
    std::int8_t carryOut(const RsmOrder& order);
    /// Starts the polling thread, or reports the profile when there is one. 0 when one runs, else -1.
    std::int8_t createThread();

    /// Sends the RSM profile to the enterprise; blocks until it answers, unless another thread is sending.
    void UpdateProperty() { rsm_->report(); }

    // ---- Resume state file (ResumeState.cpp; SavedRsm.cpp)
    static constexpr std::string_view kResumeRootTag = "<ResumeRSM>";
    /// Writes the resume state file anew; what is to be logged at `level::kForce` of that.
    records::StateFile::Notice saveRSMState();
    /// What a record says of a force polling that ran when it was written.
    struct SavedRsm {
        std::int64_t savedAt = 0;      ///< GMT clock value
        std::int32_t pollingRate = 0;  ///< seconds
        std::int32_t gracePeriod = 0;  ///< minutes

        /// Takes the values of a record; `damaged` gets the first element whose value is of no use, if there is
        /// one. False when memory ran out for one of them.
        bool readRecord(const char* contents, const char*& damaged);
        /// Nothing is left of it at `now`, a GMT clock value.
        bool isOver(std::int64_t now) const noexcept;
        /// The whole minutes that are left: at most all of them, 0 when it is over.
        std::int32_t minutesLeft(std::int64_t now) const noexcept;
    };
    /// Reads it; nothing when no time is left, which removes the file, or when there is no readable record.
    std::optional<SavedRsm> readResumeState(const std::string& path);
    /// Polls on for the time that is left.
    void resumeSavedRSM(const SavedRsm& saved);

  private:
    /// The schedule handler takes no more orders. Defined beside it, too.
    void closeSchedule();

    ZephanRSMSingleTon();
    int creationError() const noexcept;
    RsmState state() const {
        return rsm_->look([](const RsmState& state, std::int64_t /*now*/) { return state; });
    }

    const std::shared_ptr<SharedRsm> rsm_ = std::make_shared<SharedRsm>();
    mutable platform::Mutex resumeFileLock_;  ///< guards path and file; the agent is never called under it
    records::StateFile resumeFile_ GUARDED_BY(resumeFileLock_){kResumeRootTag};
    std::unique_ptr<ConfigHandler> configHandler_;
    std::shared_ptr<ScheduleRSMHandler> ownedScheduleHandler_;
    std::atomic<ScheduleRSMHandler*> scheduleHandler_{nullptr};
};
