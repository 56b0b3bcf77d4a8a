#include "detection/TunnelListner.h"

#include "config/XMLConfigData.h"
#include "logging/RDMessageHandler.h"
#include "platform/agent/Logging.h"
#include "platform/portable/Command.h"

TunnelListner::TunnelListner(RDMessageHandler* handler) {
    if (handler == nullptr) {
        KRXLog(level::kForce, "Received NULL RDMessageHandler pointer in TunnelListner's constructor.");
        return;
    }
    subject_ = handler;
    idle_ = true;
    handler->attach(this);  // last: from here on other threads may tell it something
}

TunnelListner::~TunnelListner() {
    if (subject_ != nullptr) {
        subject_->detach(this);
    }
}

void TunnelListner::updateStatus(const RDMessageHandler* handler) {
    if (subject_ == nullptr || handler != subject_) {
        return;
    }
    if (!subject_->isFileActive() && !subject_->isTunnelActive()) {
        idle_ = true;
    } else if (idle_) {
        // Cleared first: a message of this period that comes in while the script runs must not start another.
        idle_ = false;
        ExecuteModalityScript();
    }
}

void TunnelListner::ExecuteModalityScript() {
    const auto configuration = XMLConfigData::instance();
    if (configuration == nullptr) {
        KRXLog(level::kForce,
               "Received NULL XMLConfigData pointer in TunnelListner's ExecuteModalityScript.");
        return;
    }
    if (configuration->getScript().empty()) {
        return;
    }
    KRXLog(level::kError, "\n*******Going To Execute Modality Script***********");
    if (platform::runCommand(configuration->getScript().c_str()) == 0) {
        KRXLog(level::kError, "\n Script executed Successfully.");
    } else {
        KRXLog(level::kError, "Error while running script.");
    }
}
