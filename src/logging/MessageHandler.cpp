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

MessageHandler::MessageHandler() noexcept {
    try {
        message_.reserve(kKeptRoom);
    } catch (const std::bad_alloc&) {
        // The messages make their own room, as long ones do.
    }
}

void MessageHandler::log(std::uint32_t level, const char* message) {
    if (message == nullptr) {
        KRXLog(50, "\n MessageHandler received NULL message to log.");
        return;
    }
    deliver(level, message);
}

void MessageHandler::audit(const char* message) {
    if (message == nullptr) {
        KRXLog(50, "\n MessageHandler received NULL message for AuditLog.");
        return;
    }
    deliver(level::kAudit, message);
}

void MessageHandler::deliver(std::uint32_t level, const char* message) {
    message_.assign(message);
    notify(level);
    if (message_.capacity() > kLargestKeptRoom) {
        message_.clear();
        message_.shrink_to_fit();
    }
}

void MessageHandler::notify(std::uint32_t level) const {
    observers_.notify([&](Observer& observer) {
        if (level == static_cast<std::uint32_t>(level::kAudit)) {
            observer.UpdateAuditLog(this);
        } else {
            observer.updateLog(level, this);
        }
    });
}
