#include "logging/LogManager.h"

#include "config/XMLConfigData.h"
#include "detection/RemoteDetection.h"
#include "detection/TunnelListner.h"
#include "logging/FileLogger.h"
#include "logging/MessageHandler.h"
#include "logging/RDMessageHandler.h"
#include "platform/agent/Logging.h"

#include <cstring>
#include <exception>
#include <new>

namespace {

/// Creates a listener on `handler`, unless there is one. False when it cannot be had.
template <typename Listener, typename Handler>
bool attachListener(std::unique_ptr<Listener>& listener, Handler* handler) noexcept {
    if (listener) {
        return true;
    }
    try {
        listener = std::make_unique<Listener>(handler);
        return true;
    } catch (const std::exception&) {
        KRXLog(250, "new Failed in initialize of LogManager. \n");
        return false;
    }
}

/// True when one of the texts of a list (up to its empty end entry) occurs in the message.
bool containsAny(const char* message, const std::string* texts) noexcept {
    for (; texts != nullptr && !texts->empty(); ++texts) {
        if (std::strstr(message, texts->c_str()) != nullptr) {
            return true;
        }
    }
    return false;
}

/// One step up for an open text, one down for a close text.
void countMessage(const char* message, const std::string* openTexts, const std::string* closeTexts,
                  std::int32_t& count) noexcept {
    if (containsAny(message, openTexts)) {
        ++count;
    }
    if (count > 0 && containsAny(message, closeTexts)) {
        --count;
    }
}

}  // namespace

LogManager::LogManager() noexcept
    : messageHandler_(new (std::nothrow) MessageHandler),
      rdMessageHandler_(new (std::nothrow) RDMessageHandler) {
    if (!messageHandler_ || !rdMessageHandler_) {
        KRXLog(250, "new Failed in LogManager of LogManager. \n");
    }
}

LogManager::~LogManager() = default;

void LogManager::initialize() noexcept {
    const XMLConfigData* const configuration = XMLConfigData::instance();
    if (configuration == nullptr) {
        KRXLog(250, "\n Failed to get pointer for XMLConfigData, Not able to attach listners.");
        return;
    }
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

void LogManager::log(std::uint32_t level, const char* message) {
    const std::lock_guard lock(delivery_);
    if (messageHandler_) {
        messageHandler_->log(level, message);
    }
}

void LogManager::audit(const char* message) {
    const std::lock_guard lock(delivery_);
    if (messageHandler_) {
        messageHandler_->audit(message);
    }
    if (!rdMessageHandler_ || message == nullptr) {
        return;
    }
    if (UpdateTunnelCount(message)) {
        rdMessageHandler_->setTunnelActive(tunnelCount_ >= 1);
    }
    if (UpdateFileCount(message)) {
        rdMessageHandler_->setFileActive(fileCount_ >= 1);
    }
}

bool LogManager::UpdateTunnelCount(const char* message) {
    const XMLConfigData* const configuration = XMLConfigData::instance();
    if (configuration == nullptr) {
        KRXLog(250, "\n Failed to get pointer for XMLConfigData. UpdateTunnelCount failed in LogManager.");
        return false;
    }
    const std::int32_t before = tunnelCount_;
    countMessage(message, configuration->getTunnelOpenMessages(), configuration->getTunnelCloseMessages(),
                 tunnelCount_);
    const std::string& abort = configuration->getAbortMessage();
    if (tunnelCount_ > 0 && !abort.empty() && std::strstr(message, abort.c_str()) != nullptr) {
        tunnelCount_ = 0;
    }
    return tunnelCount_ != before;
}

bool LogManager::UpdateFileCount(const char* message) {
    const XMLConfigData* const configuration = XMLConfigData::instance();
    if (configuration == nullptr) {
        KRXLog(250, "\n Failed to get pointer for XMLConfigData. UpdateFileCount failed in LogManager.");
        return false;
    }
    const std::int32_t before = fileCount_;
    countMessage(message, configuration->getFileOpenMessages(), configuration->getFileCloseMessages(),
                 fileCount_);
    return fileCount_ != before;
}
