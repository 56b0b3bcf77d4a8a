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
    std::size_t count = 0;
    {
        const platform::Lock lock(delivery_);
        count = observers_.count();
    }
    for (std::size_t i = 0; i < count; ++i) {
        RDObserver* observer = nullptr;
        {
            const platform::Lock lock(delivery_);
            observer = observers_.at(i);
        }
        if (observer != nullptr) {
            observer->updateStatus(this);
        }
    }
}

void RDMessageHandler::attach(RDObserver* observer) {
    const platform::Lock lock(delivery_);
    observers_.attach(observer);
}

void RDMessageHandler::detach(const RDObserver* observer) {
    const platform::Lock lock(delivery_);
    observers_.detach(observer);
}
