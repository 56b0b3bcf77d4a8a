#pragma once

#include "controller/PollingThread.h"
#include "controller/ProfileReport.h"
#include "controller/RsmState.h"
#include "platform/Lock.h"
#include "scheduling/GmtClock.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>

class ConfigHandler;
class ScheduleRSMHandler;
namespace KRX::Messaging {
class SerializableString;
}

/// The RSM controller, of which there is one: shares the RSM state among the threads, runs the force-polling
/// thread, changes state on behalf of all callers, reports the profile to the enterprise and keeps the
/// resume state file.
///
/// Threads: all operations may be called from any thread by whoever holds a reference; the controller goes
/// with its last one. No lock is held while the host or the agent is called, but for `createThread`, which
/// lets one caller at a time start the thread or report that there is one.
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
    bool isStopping() const { return thread_.isClosing(); }
    /// Takes a controller away that holds nothing of the agent's. For the unloading of the library.
    static void dropIdleInstance();

    /// Keeps the host's service agent (not owned) unless one is held. A null agent changes nothing.
    void setServiceAgent(KRX::ServiceAgentNS::ServiceAgent* serviceAgent) {
        profile_->setServiceAgent(serviceAgent);
    }
    KRX::ServiceAgentNS::ServiceAgent* getServiceAgent() const noexcept {
        return profile_->getServiceAgent();
    }
    /// Makes the schedule handler unless there is one or the path is null; true when it was made by this
    /// call, whose caller then lets it report.
    bool createScheduleHandler(const char* scheduleFilePath);
    ScheduleRSMHandler* getScheduleHandler() const noexcept { return scheduleHandler_; }
    /// Null only when its memory could not be had.
    ConfigHandler* getConfigHandler() const noexcept { return configHandler_.get(); }

    std::int32_t getRSMMode() const { return state().rsmMode; }
    void setGracePeriod(double minutes);
    void setPollingRate(std::int32_t seconds);
    std::int64_t getDelayedEndTime() const { return state().delayedEndTime; }
    std::string getResumeFilePath() const;
    void setResumeFilePath(const std::string& path);

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
    /// Starts the polling thread, or reports the profile when there is one. 0 when one runs, else -1.
    std::int8_t createThread();

    // ---- Profile
    /// Sends the RSM profile to the enterprise; blocks until it answers. Reports that overlap may reach it in
    /// any order, so one that is answered after another, different one was begun is followed by one more: the
    /// enterprise ends with what is true.
    void UpdateProperty();
    /// Reports that one call sends at the most; an agent whose reports cause changes would keep it for ever.
    static constexpr int kMostReports = 4;

    /// A report under way, for a sender that keeps no controller while it sends.
    struct Report {
        std::shared_ptr<ProfileReport> profile;
        RsmState state;
        std::uint64_t number = 0;
    };
    /// A report of the state as it is now, to be sent through its `profile`.
    Report beginReport();
    /// A different report was begun since this one.
    bool isOutdated(const Report& report) const;

    // ---- Resume state file (ResumeState.cpp)
    /// Writes the resume state file anew. Null, or the line to be logged at `level::kForce` if it failed.
    const char* saveRSMState();
    /// What a record says of a force polling that ran when it was written.
    struct SavedRsm {
        std::int64_t savedAt = 0;      ///< GMT clock value
        std::int32_t pollingRate = 0;  ///< seconds
        std::int32_t gracePeriod = 0;  ///< minutes
    };
    /// Reads it; nothing when no time is left, which removes the file, or when there is no readable record.
    std::optional<SavedRsm> readResumeState(const std::string& path);
    /// Polls on for the time that is left.
    void resumeSavedRSM(const SavedRsm& saved);

  private:
    friend class ForcePollingTask;

    ZephanRSMSingleTon();
    int creationError() const noexcept;
    RsmState state() const;
    /// Looks at or changes the state under its lock: `change(state, now)`, which calls nothing else.
    template <typename Change>
    auto changeState(Change&& change) {
        const std::int64_t now = scheduling::gmtNow();
        const platform::Lock lock(stateLock_);
        return std::forward<Change>(change)(state_, now);
    }

    mutable platform::Mutex stateLock_;  ///< of the three below; only the thread's own lock is taken under it
    RsmState state_;
    std::uint64_t reportsBegun_ = 0;
    RsmState newestReport_;  ///< what the last one that was begun tells

    mutable platform::Mutex resumeFileLock_;    ///< of path and file; no agent is called under it
    std::string resumeFilePath_, resumePlace_;  ///< of the last save or read; where that led at first

    PollingThread thread_;
    std::shared_ptr<ProfileReport> profile_;
    std::unique_ptr<ConfigHandler> configHandler_;
    std::unique_ptr<ScheduleRSMHandler> ownedScheduleHandler_;
    std::atomic<ScheduleRSMHandler*> scheduleHandler_{nullptr};
};
