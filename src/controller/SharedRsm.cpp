#include "controller/SharedRsm.h"

#include "platform/portable/ScopeGuard.h"

int SharedRsm::creationError() const noexcept {
    const int error = lock_.creationError() != 0 ? lock_.creationError() : reporter_.creationError();
    return error != 0 ? error : thread_.creationError();
}

void SharedRsm::report(PollingThread::Number number) {
    std::optional<RsmState> telling;
    const platform::ScopeGuard unwound([&] {
        if (telling) {
            reporter_.giveBack();
        }
    });
    for (;; profile_.send(*telling)) {
        const platform::Lock lock(lock_);
        if (telling) {
            told_ = telling;
            if (!isUntold() || (number == 0 ? thread_.seesOrders() : !thread_.has(number))) {
                telling.reset();
                reporter_.giveBack();
                return;
            }
        } else {
            asked_ = state_;
            if (!reporter_.tryTake()) {
                return;
            }
        }
        asked_ = telling = state_;
        told_.reset();
    }
}

bool SharedRsm::isReportLeft() {
    const platform::Lock lock(lock_);
    // Whoever has the role looks again before it is given back.
    if (!isUntold() || !reporter_.tryTake()) {
        return false;
    }
    reporter_.giveBack();
    return true;
}

bool SharedRsm::isUntold() const {
    return asked_ && (!told_ || !RsmState::isSameProfile(*asked_, *told_));
}
