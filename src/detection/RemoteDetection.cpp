#include "detection/RemoteDetection.h"

#include "controller/ZephanRSMSingleTon.h"
#include "logging/RDMessageHandler.h"
#include "platform/agent/Logging.h"

RemoteDetection::RemoteDetection(RDMessageHandler* handler) {
    if (handler == nullptr) {
        KRXLog(level::kForce, "Received NULL RDMessageHandler pointer in RemoteDetection constructor");
        return;
    }
    subject_ = handler;
    controller_ = ZephanRSMSingleTon::existing();
    idle_ = true;
    handler->attach(this);  // last: from here on other threads may tell it something
}

RemoteDetection::~RemoteDetection() {
    if (subject_ != nullptr) {
        subject_->detach(this);
    }
}

void RemoteDetection::updateStatus(const RDMessageHandler* handler) {
    if (subject_ != nullptr && handler == subject_) {
        UpdateRemoteActivity();
    }
}

void RemoteDetection::UpdateRemoteActivity() {
    const auto controller = controller_.lock();
    if (controller == nullptr) {
        KRXLog(level::kForce,
               "Received NULL ZephanRSMSingleTon pointer in RemoteDetection's UpdateRemoteActivity");
        return;
    }
    if (!subject_->isFileActive() && !subject_->isTunnelActive()) {
        controller->setRemoteActivity(false);
        idle_ = true;
    } else if (idle_) {
        controller->setRemoteActivity(true);
        idle_ = false;
    }
}
