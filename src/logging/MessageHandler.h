#pragma once

#include "logging/Notices.h"
#include "logging/ObserverList.h"
#include "platform/portable/Lock.h"

#include <cstdint>
#include <string>

class Observer;

/// Passes log and audit messages to its observers, under the delivery lock. Any thread.
class MessageHandler final {
  public:
    /// The lock must outlive the handler.
    explicit MessageHandler(platform::Mutex& delivery) noexcept;
    MessageHandler(const MessageHandler&) = delete;
    MessageHandler& operator=(const MessageHandler&) = delete;

    // Each answers what the observers have to tell of it, for `LogFileWriter::report`. A null message is
    // logged as an error and not delivered. Throws std::bad_alloc for a message too long to be kept.
    Notices log(std::uint32_t level, const char* message);
    Notices audit(const char* message);
    /// Hands the kept message to the observers. The caller holds the delivery lock.
    Notices notify(std::uint32_t level) const;
    /// Observers are not owned. One that was attached twice is told twice.
    void attach(Observer* observer);
    void detach(const Observer* observer);

    /// The message being delivered, for observers; valid while the delivery lock is held.
    const std::string& getMessage() const noexcept { return message_; }

  private:
    Notices deliver(std::uint32_t level, const char* message);

    platform::Mutex& delivery_;
    ObserverList<Observer> observers_;
    std::string message_;
};
