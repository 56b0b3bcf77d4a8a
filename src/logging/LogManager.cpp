#include "logging/LogManager.h"

#include "config/XMLConfigData.h"
#include "detection/RemoteDetection.h"
#include "detection/TunnelListner.h"
#include "logging/FileLogger.h"
#include "logging/LogFileWriter.h"
#include "logging/MessageHandler.h"
#include "logging/RDMessageHandler.h"
#include "platform/agent/Logging.h"
#include "platform/portable/Lock.h"
#include "platform/portable/ScopeGuard.h"

#include <exception>
#include <new>
#include <utility>

namespace {

/// Creates a listener on `handler`, unless there is one. False when it cannot be had.
template <typename Listener, typename Handler>
bool attachListener(std::unique_ptr<Listener>& listener, Handler* handler) {
    if (listener) {
        return true;
    }
    try {
        listener = std::make_unique<Listener>(handler);
        return true;
    } catch (const std::exception&) {
        KRXLog(level::kForce, "new Failed in initialize of LogManager. \n");
        return false;
    }
}

}  // namespace

LogManager::LogManager() noexcept
    : messageHandler_(new (std::nothrow) MessageHandler(delivery_)),
      rdMessageHandler_(new (std::nothrow) RDMessageHandler(delivery_)) {}

LogManager::~LogManager() = default;

void LogManager::initialize() {
    const auto configuration = XMLConfigData::instance();
    if (configuration == nullptr) {
        KRXLog(level::kForce, "\n Failed to get pointer for XMLConfigData, Not able to attach listners.");
        return;
    }
    // Two starts may overlap when the host holds one up for long: the first one attaches.
    if (attaching_.exchange(true)) {
        return;
    }
    const platform::ScopeGuard attached([this] { attaching_ = false; });
    if (configuration->getRDListner() && !attachListener(remoteDetection_, rdMessageHandler_.get())) {
        return;
    }
    if (configuration->getTunnelListner() && !attachListener(tunnelListner_, rdMessageHandler_.get())) {
        return;
    }
    if (configuration->getFileListner() && configuration->getFileLogger()) {
        attachListener(fileLogger_, messageHandler_.get());
    }
}

void LogManager::close() noexcept {
    closed_ = true;
    LogFileWriter::destroyInstance();
}

void LogManager::log(std::uint32_t level, const char* message) {
    if (messageHandler_ != nullptr) {
        LogFileWriter::report(messageHandler_->log(level, message));
    }
}

void LogManager::audit(const char* message) {
    const auto configuration = XMLConfigData::instance();
    Notices notices;
    bool changed = false;
    {
        const platform::Lock lock(delivery_);
        if (messageHandler_ != nullptr) {
            notices = messageHandler_->audit(message);
        }
        if (configuration != nullptr && rdMessageHandler_ != nullptr && message != nullptr) {
            // The stored copy: the host may use its own text for the next message already.
            const char* const text =
                messageHandler_ != nullptr ? messageHandler_->getMessage().c_str() : message;
            if (texts_.configuration != configuration) {
                texts_ = Texts(configuration);
            }
            const AuditMeaning meaning = texts_.activity.meaningOf(text);
            UpdateTunnelCount(meaning.tunnel);
            UpdateFileCount(meaning.file);
        }
        changed = !changes_.empty();
    }
    LogFileWriter::report(notices);
    if (configuration == nullptr) {
        KRXLog(level::kForce,
               "\n Failed to get pointer for XMLConfigData. UpdateTunnelCount failed in LogManager.");
        KRXLog(level::kForce,
               "\n Failed to get pointer for XMLConfigData. UpdateFileCount failed in LogManager.");
    }
    if (changed) {
        tellChanges();
    }
}

LogManager::Texts::Texts(std::shared_ptr<const XMLConfigData> of) noexcept
    : configuration(std::move(of)), activity(configuration->settings()) {}

void LogManager::UpdateTunnelCount(Activity activity) {
    update(tunnelCount_, activity, &RDMessageHandler::setTunnelActive);
}

void LogManager::UpdateFileCount(Activity activity) {
    update(fileCount_, activity, &RDMessageHandler::setFileActive);
}

void LogManager::update(std::int32_t& count, Activity activity, void (RDMessageHandler::*set)(bool active)) {
    const std::int32_t next = countAfter(activity, count);
    if (next != count) {
        changes_.push_back({set, next >= 1});
        count = next;
    }
}

bool LogManager::takeChange(Change& change) {
    const platform::Lock lock(delivery_);
    if (changes_.empty()) {
        return false;
    }
    change = changes_.front();
    changes_.erase(changes_.begin());
    return true;
}

void LogManager::tellChanges() {
    const auto areThereAny = [this] {
        const platform::Lock lock(delivery_);
        return !changes_.empty();
    };
    // Looked at again after the role was given back: a change that found it taken just before relies on that.
    while (areThereAny()) {
        if (!teller_.tryTake()) {
            return;  // also when this message was caused by the telling; the change is told in its turn
        }
        const platform::ScopeGuard role([this] { teller_.giveBack(); });
        for (Change change{}; takeChange(change);) {
            if (!closed_) {
                (*rdMessageHandler_.*change.set)(change.active);
            }
        }
    }
}
