#pragma once

#include "platform/Mutex.h"
#include "platform/agent/Registration.h"
#include "scheduling/TaggedText.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

class ConfigHandler;
class ScheduleRSMHandler;
struct KRXThread;
namespace KRX::ServiceAgentNS {
class ServiceAgent;
class VirtualAsset;
}  // namespace KRX::ServiceAgentNS

/// RSM modes, as numbers of the controller's operations.
namespace rsm {
constexpr std::int32_t kNotActive = 0;
constexpr std::int32_t kForcePollGrace = 1;
constexpr std::int32_t kForcePollActivity = 2;
}  // namespace rsm

/// The RSM controller: holds the RSM state, runs the force-polling thread, changes state on behalf of all
/// callers, reports the profile to the enterprise and keeps the resume state file. One a process.
///
/// Threads: all operations may be called from any thread that holds a pass of the module gate, except
/// `destroyInstance`, which is for the stop exports. Class-wide operations reach the controller through
/// `getInstance`.
class ZephanRSMSingleTon final {
  public:
    ZephanRSMSingleTon(const ZephanRSMSingleTon&) = delete;
    ZephanRSMSingleTon& operator=(const ZephanRSMSingleTon&) = delete;

    // ---- Core (ZephanRSMSingleTon.cpp)

    /// The controller, made on first use; null when it cannot be made (a later call tries again).
    static ZephanRSMSingleTon* getInstance() noexcept;
    /// Ends the polling thread (waits at most 3000 ms, then drops it) and destroys the controller and all it
    /// owns.
    static void destroyInstance() noexcept;

    /// Keeps the host's service agent (not owned) and gives the asset's channel and credentials to the
    /// registration proxy. A null agent changes nothing.
    void setServiceAgent(KRX::ServiceAgentNS::ServiceAgent* serviceAgent);
    KRX::ServiceAgentNS::ServiceAgent* getServiceAgent() const noexcept { return serviceAgent_; }
    /// Makes the schedule handler unless there is one or the path is null.
    void createScheduleHandler(const char* scheduleFilePath) noexcept;
    ScheduleRSMHandler* getScheduleHandler() const noexcept { return scheduleHandler_.get(); }
    /// Null only when its memory could not be had.
    ConfigHandler* getConfigHandler() const noexcept { return configHandler_.get(); }

    std::int32_t getRSMMode() const;
    void setGracePeriod(double minutes);
    void setPollingRate(std::int32_t seconds);
    std::int64_t getDelayedEndTime() const;
    std::string getResumeFilePath() const { return resumeFilePath_; }
    void setResumeFilePath(const std::string& path) { resumeFilePath_ = path; }

    // ---- Transitions (Transitions.cpp)

    /// Starts force polling or, while it runs, starts it afresh with the new values. `currentPollInterval`
    /// receives the asset's own poll interval in seconds, all bits set without an asset. 0 when a thread
    /// polls, -1 when none could be started (the values stay set).
    std::int8_t ForcePoll(std::int32_t minutes, std::int32_t pollingRateSeconds,
                          std::uint32_t& currentPollInterval);
    /// Ends force polling after the next poll unless remote activity is going on; the outcome is put into
    /// `result`. Always 0.
    std::int8_t Disconnect(const char* memberName, KRX::Messaging::SerializableString& result);
    /// Stores an RSM that is to start later, replacing an earlier one that still waits. Start and end are GMT
    /// clock values.
    std::int8_t scheduleDelayedProfile(std::int32_t pollingRateSeconds, std::int64_t start, std::int64_t end,
                                       std::int32_t activityGraceMinutes);
    /// Tells that remote activity begins or has ended.
    void setRemoteActivity(bool active);
    static void enterRemoteActivityMode();
    /// Polls on for the time that is left of what `readResumeState` has read.
    void resumeSavedRSM();

    // ---- Force polling task (ForcePolling.cpp)

    /// Starts the polling thread unless there is one, in which case the profile is reported. 0 when one runs,
    /// else -1.
    std::int8_t createThread() noexcept;
    /// Makes the delayed profile the active one; the mode stays, or becomes `mode` (anything but 1 and 2
    /// counts as 0).
    static void convertDelayedToNormal();
    static void convertDelayedToNormal(std::int32_t mode);

    // ---- Profile (ProfileReport.cpp)

    /// Sends the eight properties of the RSM profile to the enterprise and, when it took them, writes them to
    /// the log.
    static void UpdateProperty() noexcept;
    static void LogRSMProfile() noexcept;
    /// Profile date text, "2007-30-09 GMT 05:06:00"; room for 40 characters.
    static void dateToString(std::int64_t gmtClockValue, char* text) noexcept;

    // ---- Resume state file (ResumeState.cpp)

    /// Writes the resume state file anew.
    void saveRSMState() noexcept;
    /// Reads it; true when the saved grace period has time left. Removes a file without time left.
    bool readResumeState(const std::string& path);

  private:
    /// The RSM state that callers and the polling thread share.
    struct State {
        bool remoteActivity = false;           ///< going on, as remote detection tells
        bool activityEntered = false;          ///< began during force polling, not yet taken up by the loop
        std::int32_t pollingRate = 0;          ///< seconds
        double gracePeriod = 0.0;              ///< minutes
        std::int32_t activityGracePeriod = 0;  ///< minutes of polling after the end of remote activity
        bool inGracePeriod = false;            ///< no remote activity taken up in the current grace period
        bool restartRequested = false;         ///< the polling loop counts afresh from its next pass on
        bool delayedProfilePending = false;
        double delayedGracePeriod = 0.0;    ///< minutes
        double delayedPollingRate = 0.0;    ///< seconds
        std::int64_t delayedStartTime = 0;  ///< times are GMT clock values
        std::int64_t delayedEndTime = 0;    ///< outlives the pending profile, for the schedule clean-up
        std::int32_t delayedActivityGracePeriod = 0;  ///< minutes
        std::int64_t modeStartTime = 0;
        std::int64_t rsmStartTime = 0;
        std::int32_t rsmMode = rsm::kNotActive;

        /// What one pass of the polling loop asks for after it has changed the state.
        struct Effects {
            bool report = false;
            bool save = false;
        };

        std::uint32_t pollsPerMinute() const noexcept;
        /// Polls that the grace period allows.
        double pollLimit() const noexcept;
        std::int32_t wholeMinutes() const noexcept;
        std::int32_t secondsUntilDelayedStart() const noexcept;
        void convertDelayed() noexcept;
        void convertDelayed(std::int32_t mode) noexcept;
        /// Ends force polling when it is over after `pollCount` polls, or at once when polls cannot be made.
        bool endWhenOver(std::uint32_t& pollCount, bool canPoll) noexcept;
        /// In the waiting phase: the delayed profile becomes the active one when its start has come.
        bool startWhenDue() noexcept;
        // The steps of a pass of the polling loop, in their order; each may change the poll count.
        Effects restartOrFirstPass(std::uint32_t& pollCount) noexcept;
        Effects takeUpActivity(std::uint32_t& pollCount) noexcept;
        Effects endActivity(std::uint32_t& pollCount) noexcept;
        Effects holdForActivity(std::uint32_t& pollCount) noexcept;
        Effects markLastPoll(std::uint32_t& pollCount) noexcept;
        Effects takeOverDueProfile(std::uint32_t& pollCount) noexcept;
        Effects takeOverDueProfileAfterActivity(std::uint32_t& pollCount) noexcept;
    };

    ZephanRSMSingleTon();
    ~ZephanRSMSingleTon();

    void setCredentials();
    void stopPollingThread() noexcept;

    void releaseFinishedThread() noexcept;
    void releaseFinishedThreadLocked() noexcept;
    std::int8_t generateThread() noexcept;
    static int DataPollingTask(void* serviceAgent) noexcept;
    int pollUntilOver(KRX::ServiceAgentNS::ServiceAgent& serviceAgent);
    void waitForDelayedStart();
    bool isOver(std::uint32_t& pollCount, bool canPoll);
    void pollOnce(std::uint32_t& pollCount, KRX::ServiceAgentNS::VirtualAsset& asset);
    bool isLeaving();
    void apply(State::Effects (State::*step)(std::uint32_t&) noexcept, std::uint32_t& pollCount);
    State state() const;

    mutable std::mutex stateLock_;
    State state_;

    std::atomic<KRX::ServiceAgentNS::ServiceAgent*> serviceAgent_{nullptr};
    /// Written under the thread mutex only. Stays after the thread's end until the next start releases it.
    std::atomic<KRXThread*> pollingThread_{nullptr};
    /// Under the state lock: the thread has looked at the state for the last time and is about to end.
    bool pollingThreadLeaves_ = false;
    /// Under the thread mutex: the controller is being destroyed and starts no thread any more.
    bool closing_ = false;

    // The resume state file's path and values: of the last save or read. Only the polling thread and, with
    // nobody else inside the module, the start-up use them.
    std::string resumeFilePath_;
    char resumeDate_[scheduling::kValueSize] = "";
    char resumeTime_[scheduling::kValueSize] = "";
    char resumePollingRate_[scheduling::kValueSize] = "";
    char resumeGracePeriod_[scheduling::kValueSize] = "";
    std::int64_t resumeSavedAt_ = 0;

    KRX::Services::RegistrationNS::RegistrationProxy registrationProxy_;
    std::unique_ptr<ScheduleRSMHandler> scheduleHandler_;
    std::unique_ptr<ConfigHandler> configHandler_;
    platform::Mutex threadMutex_;
};
