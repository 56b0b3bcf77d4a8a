#include "logging/MessageHandler.h"

#include "logging/Observer.h"
#include "platform/agent/Logging.h"

#include <new>

namespace {

// Room kept for messages, so that usual ones need no memory of their own and a giant one does not keep its
// own for ever.
constexpr std::size_t kKeptRoom = 2048;
constexpr std::size_t kLargestKeptRoom = std::size_t{64} * 1024;

}  // namespace

MessageHandler::MessageHandler(platform::Mutex& delivery) noexcept : delivery_(delivery) {
    try {
        message_.reserve(kKeptRoom);
    } catch (const std::bad_alloc&) {
        // The messages make their own room, as long ones do.
    }
}

Notices MessageHandler::log(std::uint32_t level, const char* message) {
    if (message == nullptr) {
        KRXLog(::level::kError, "\n MessageHandler received NULL message to log.");
        return {};
    }
    return deliver(level, message);
}

Notices MessageHandler::audit(const char* message) {
    if (message == nullptr) {
        KRXLog(::level::kError, "\n MessageHandler received NULL message for AuditLog.");
        return {};
    }
    return deliver(::level::kAudit, message);
}

void MessageHandler::attach(Observer* observer) {
    const platform::Lock lock(delivery_);
    observers_.attach(observer);
}

void MessageHandler::detach(const Observer* observer) {
    const platform::Lock lock(delivery_);
    observers_.detach(observer);
}

Notices MessageHandler::deliver(std::uint32_t level, const char* message) {
    const platform::Lock lock(delivery_);
    if (message_.capacity() > kLargestKeptRoom) {
        std::string().swap(message_);
    }
    message_.assign(message);
    return notify(level);
}

Notices MessageHandler::notify(std::uint32_t level) const {
    Notices notices;
    const std::size_t count = observers_.count();
    for (std::size_t i = 0; i < count; ++i) {
        Observer* const observer = observers_.at(i);
        if (observer == nullptr) {
            continue;
        }
        if (level == static_cast<std::uint32_t>(::level::kAudit)) {
            observer->UpdateAuditLog(this);
        } else {
            observer->updateLog(level, this);
        }
        notices += observer->takeNotices();
    }
    return notices;
}
