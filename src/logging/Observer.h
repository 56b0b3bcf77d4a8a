#pragma once

#include "logging/Notices.h"

#include <cstdint>

class MessageHandler;

/// Base of what receives the log and audit messages of a `MessageHandler`. Called with the delivery lock
/// held, so an observer logs and prints nothing: what it has to tell of its work it keeps for `takeNotices`.
class Observer {
  public:
    Observer() = default;
    Observer(const Observer&) = delete;
    Observer& operator=(const Observer&) = delete;
    virtual ~Observer() = default;
    /// A log message of this level is at the handler's `getMessage`.
    virtual void updateLog(std::uint32_t /*level*/, const MessageHandler* /*handler*/) {}
    /// An audit message likewise.
    virtual void UpdateAuditLog(const MessageHandler* /*handler*/) {}
    /// What there is to tell since the last call.
    virtual Notices takeNotices() noexcept { return {}; }
};
