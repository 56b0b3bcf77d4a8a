#pragma once

#include <cstdint>

class MessageHandler;

/// Base of what receives the log and audit messages of a `MessageHandler`. Called with the delivery lock
/// held.
class Observer {
  public:
    Observer() = default;
    Observer(const Observer&) = delete;
    Observer& operator=(const Observer&) = delete;
    virtual ~Observer() = default;
    virtual void updateLog(std::uint32_t /*level*/, const MessageHandler* /*handler*/) {}
    virtual void UpdateAuditLog(const MessageHandler* /*handler*/) {}
};
