#pragma once

#include "detection/AuditMeaning.h"
#include "platform/Mutex.h"
#include "platform/portable/Role.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

class FileLogger;
class MessageHandler;
class RDMessageHandler;
class RemoteDetection;
class TunnelListner;
class XMLConfigData;

/// Routes every log and audit message of the agent: to the file logger, and audit messages also to the
/// counters that drive remote detection. Any thread.
///
/// A delivery is storing, writing and counting, under the delivery lock. What comes of the counting, reports
/// to the enterprise and the modality script, follows outside it, in the order of the changes: the thread
/// whose change came first tells its own and those that come in meanwhile, while all others go on. So no
/// message waits for a report or a script, but that which began it.
class LogManager final {
  public:
    LogManager() noexcept;
    LogManager(const LogManager&) = delete;
    LogManager& operator=(const LogManager&) = delete;
    ~LogManager();

    /// False when memory for a handler could not be had; its messages are dropped.
    bool isComplete() const noexcept { return messageHandler_ != nullptr && rdMessageHandler_ != nullptr; }

    /// Attaches the listeners that the configuration names; those attached before stay.
    void initialize();
    /// Delivers a log message.
    void log(std::uint32_t level, const char* message);
    /// Delivers an audit message. Returns when what it began, a report or the script, has ended.
    void audit(const char* message);
    /// The controller is gone: changes of the remote-detection state are told to nobody any more.
    void close() noexcept;

  private:
    /// A change of one of the counts from or to 0, or within: what the state is then.
    struct Change {
        void (RDMessageHandler::*set)(bool active);
        bool active;
    };

    /// The texts of the configuration that the last audit message found, prepared for the search.
    struct Texts {
        Texts() noexcept = default;
        explicit Texts(std::shared_ptr<const XMLConfigData> of) noexcept;

        std::shared_ptr<const XMLConfigData> configuration;
        ActivityTexts activity;
    };

    // Count what an audit message says, and note the change if there is one.
    void UpdateTunnelCount(Activity activity) REQUIRES(delivery_);
    void UpdateFileCount(Activity activity) REQUIRES(delivery_);
    void update(std::int32_t& count, Activity activity, void (RDMessageHandler::*set)(bool active))
        REQUIRES(delivery_);
    void tellChanges();
    bool takeChange(Change& change);

    /// Of counts and changes, and of what the handlers say; nothing is called under it.
    platform::Mutex delivery_;
    std::unique_ptr<MessageHandler> messageHandler_;
    std::unique_ptr<RDMessageHandler> rdMessageHandler_;
    // Listeners detach themselves from the handlers above when they go, so they go first.
    std::unique_ptr<FileLogger> fileLogger_;
    std::unique_ptr<TunnelListner> tunnelListner_;
    std::unique_ptr<RemoteDetection> remoteDetection_;
    std::atomic<bool> attaching_{false};
    Texts texts_ GUARDED_BY(delivery_);
    std::int32_t fileCount_ GUARDED_BY(delivery_) = 0;
    std::int32_t tunnelCount_ GUARDED_BY(delivery_) = 0;
    std::vector<Change> changes_ GUARDED_BY(delivery_);  ///< not told yet

    platform::Role teller_;  ///< of the thread that tells
    std::atomic<bool> closed_{false};
};
