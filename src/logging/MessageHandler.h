#pragma once

#include "logging/ObserverList.h"

#include <cstdint>
#include <string>

class Observer;

/// Passes log and audit messages to its observers. Not for use by two threads at once: the `LogManager` sees
/// to that.
class MessageHandler final {
  public:
    MessageHandler() noexcept;
    MessageHandler(const MessageHandler&) = delete;
    MessageHandler& operator=(const MessageHandler&) = delete;

    void log(std::uint32_t level, const char* message);
    void audit(const char* message);
    void notify(std::uint32_t level) const;
    void attach(Observer* observer) { observers_.attach(observer); }
    void detach(const Observer* observer) { observers_.detach(observer); }

    /// The message being delivered; valid until the next one comes in, which may be one that an observer
    /// causes.
    const std::string& getMessage() const noexcept { return message_; }

  private:
    void deliver(std::uint32_t level, const char* message);

    ObserverList<Observer> observers_;
    std::string message_;
};
