#pragma once

#include "logging/Observer.h"

#include <memory>

class LogFileWriter;

/// Observer that turns each message into an entry of the log file, unless the configured level keeps it out.
class FileLogger final : public Observer {
  public:
    /// Attaches itself to the handler, which must outlive it; a null handler leaves it inert.
    explicit FileLogger(MessageHandler* handler);
    ~FileLogger() override;
    void updateLog(std::uint32_t level, const MessageHandler* handler) override;
    void UpdateAuditLog(const MessageHandler* handler) override;
    Notices takeNotices() noexcept override;

  private:
    std::shared_ptr<LogFileWriter> writer_;
    MessageHandler* subject_ = nullptr;
};
