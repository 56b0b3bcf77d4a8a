#include "logging/FileLogger.h"

#include "config/LogLevel.h"
#include "logging/LogFileWriter.h"
#include "logging/MessageHandler.h"
#include "platform/agent/Logging.h"

FileLogger::FileLogger(MessageHandler* handler) {
    if (handler == nullptr) {
        KRXLog(250, "Received NULL MessageHandler pointer in FileLogger constructor");
        return;
    }
    handler->attach(this);
    subject_ = handler;
    writer_ = LogFileWriter::getInstance();
}

FileLogger::~FileLogger() {
    if (subject_ != nullptr) {
        subject_->detach(this);
        LogFileWriter::destroyInstance();
    }
}

void FileLogger::updateLog(std::uint32_t level, const MessageHandler* handler) {
    if (handler == nullptr) {
        KRXLog(250, "Received NULL MessageHandler pointer in FileLogger updateLog");
        return;
    }
    if (handler != subject_ || writer_ == nullptr) {
        return;
    }
    const char* const message = subject_->getMessage().c_str();
    switch (level) {
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
    LogFileWriter::report(writer_->takeNotices());
}

void FileLogger::UpdateAuditLog(const MessageHandler* handler) {
    if (handler == nullptr) {
        KRXLog(250, "Received NULL MessageHandler pointer in FileLogger UpdateAuditLog.");
        return;
    }
    if (handler == subject_ && writer_ != nullptr) {
        writer_->writeInfo(subject_->getMessage().c_str());
        LogFileWriter::report(writer_->takeNotices());
    }
}
