#include "logging/RDMessageHandler.h"

#include "logging/RDObserver.h"

void RDMessageHandler::setTunnelActive(bool active) {
    tunnelActive_ = active;
    notify();
}

void RDMessageHandler::setFileActive(bool active) {
    fileActive_ = active;
    notify();
}

void RDMessageHandler::notify() const {
    observers_.notify([this](RDObserver& observer) { observer.updateStatus(this); });
}
