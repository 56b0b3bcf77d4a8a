#include "logging/FileLogger.h"

#include "logging/LogFileWriter.h"
#include "logging/MessageHandler.h"
#include "platform/agent/Logging.h"

FileLogger::FileLogger(MessageHandler* handler) {
    if (handler == nullptr) {
        KRXLog(level::kForce, "Received NULL MessageHandler pointer in FileLogger constructor");
        return;
    }
    writer_ = LogFileWriter::getInstance();
    subject_ = handler;
    handler->attach(this);
}

FileLogger::~FileLogger() {
    if (subject_ != nullptr) {
        subject_->detach(this);
    }
}

void FileLogger::updateLog(std::uint32_t messageLevel, const MessageHandler* handler) {
    if (handler == nullptr) {
        KRXLog(level::kForce, "Received NULL MessageHandler pointer in FileLogger updateLog");
        return;
    }
    if (handler != subject_ || writer_ == nullptr) {
        return;
    }
    const char* const message = subject_->getMessage().c_str();
    switch (messageLevel) {
        case level::kForce:
            writer_->writeForce(message);
            break;
        case level::kError:
            writer_->writeError(message);
            break;
        case level::kWarn:
            writer_->writeWarn(message);
            break;
        case level::kTrace:
            writer_->writeTrace(message);
            break;
        default:
            writer_->writeInfo(message);
            break;
    }
}

void FileLogger::UpdateAuditLog(const MessageHandler* handler) {
    if (handler == nullptr) {
        KRXLog(level::kForce, "Received NULL MessageHandler pointer in FileLogger UpdateAuditLog.");
        return;
    }
    if (handler == subject_ && writer_ != nullptr) {
        writer_->writeInfo(subject_->getMessage().c_str());
    }
}

Notices FileLogger::takeNotices() noexcept {
    return writer_ == nullptr ? Notices{} : writer_->takeNotices();
}
