#include "logging/LogManager.h"

#include "config/XMLConfigData.h"
#include "detection/RemoteDetection.h"
#include "detection/TunnelListner.h"
#include "logging/FileLogger.h"
#include "logging/LogFileWriter.h"
#include "logging/MessageHandler.h"
#include "logging/RDMessageHandler.h"
#include "platform/Lock.h"
#include "platform/ScopeEnd.h"
#include "platform/agent/Logging.h"

#include <cstring>
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

/// The count after one step up for an open text and one down for a close text.
std::int32_t counted(const char* message, const TextSearch& openTexts, const TextSearch& closeTexts,
                     std::int32_t count) noexcept {
    if (openTexts.occursIn(message)) {
        ++count;
    }
    if (count > 0 && closeTexts.occursIn(message)) {
        --count;
    }
    return count;
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
    const platform::ScopeEnd attached([this] { attaching_ = false; });
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
            UpdateTunnelCount(text);
            UpdateFileCount(text);
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
    : configuration(std::move(of)),
      tunnelOpen(configuration->getTunnelOpenMessages()),
      tunnelClose(configuration->getTunnelCloseMessages()),
      fileOpen(configuration->getFileOpenMessages()),
      fileClose(configuration->getFileCloseMessages()) {}

void LogManager::UpdateTunnelCount(const char* message) {
    std::int32_t count = counted(message, texts_.tunnelOpen, texts_.tunnelClose, tunnelCount_);
    const std::string& abort = texts_.configuration->getAbortMessage();
    if (count > 0 && !abort.empty() && std::strstr(message, abort.c_str()) != nullptr) {
        count = 0;
    }
    if (count != tunnelCount_) {
        changes_.push_back({&RDMessageHandler::setTunnelActive, count >= 1});
        tunnelCount_ = count;
    }
}

void LogManager::UpdateFileCount(const char* message) {
    const std::int32_t count = counted(message, texts_.fileOpen, texts_.fileClose, fileCount_);
    if (count != fileCount_) {
        changes_.push_back({&RDMessageHandler::setFileActive, count >= 1});
        fileCount_ = count;
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
        const platform::ScopeEnd role([this] { teller_.giveBack(); });
        for (Change change{}; takeChange(change);) {
            if (!closed_) {
                (*rdMessageHandler_.*change.set)(change.active);
            }
        }
    }
}
