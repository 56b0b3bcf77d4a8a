#pragma once

#include <cstdint>
#include <memory>
#include <mutex>

class FileLogger;
class MessageHandler;
class RDMessageHandler;
class RemoteDetection;
class TunnelListner;

/// Routes every log and audit message of the agent: to the file logger, and audit messages also to the
/// counters that drive remote detection. Any thread; one delivery at a time. A message that a delivery itself
/// causes may come in on the same thread.
class LogManager final {
  public:
    LogManager() noexcept;
    LogManager(const LogManager&) = delete;
    LogManager& operator=(const LogManager&) = delete;
    ~LogManager();

    /// Attaches the listeners that the configuration names; those attached before stay.
    void initialize() noexcept;
    void log(std::uint32_t level, const char* message);
    void audit(const char* message);

    /// Count the open and close texts in an audit message. True when the count changed.
    bool UpdateTunnelCount(const char* message);
    bool UpdateFileCount(const char* message);

  private:
    std::recursive_mutex delivery_;
    std::unique_ptr<MessageHandler> messageHandler_;
    std::unique_ptr<RDMessageHandler> rdMessageHandler_;
    // Listeners detach themselves from the handlers above when they go, so they go first.
    std::unique_ptr<FileLogger> fileLogger_;
    std::unique_ptr<TunnelListner> tunnelListner_;
    std::unique_ptr<RemoteDetection> remoteDetection_;
    std::int32_t fileCount_ = 0;
    std::int32_t tunnelCount_ = 0;
};
