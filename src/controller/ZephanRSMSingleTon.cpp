#include "controller/ZephanRSMSingleTon.h"

#include "logging/ConfigHandler.h"
#include "platform/ThreadEnd.h"
#include "platform/agent/Logging.h"
#include "platform/portable/NoDestructor.h"
#include "platform/portable/Published.h"
#include "platform/portable/ScopeGuard.h"

#include <exception>
#include <new>
#include <utility>

namespace {

platform::NoDestructor<platform::Published<ZephanRSMSingleTon>> published;

/// A message that comes after the last stop makes a controller once more; it goes with the library,
/// if it can.
const platform::ScopeGuard atUnload([] {
    const auto present = platform::mayWaitAtUnload() ? published->get() : nullptr;
    // One that has to do with the agent belongs to a host that ends without a stop, or is wrong to unload. What
    // the agent needs for its calls may be gone by now.
    if (present != nullptr && present->getServiceAgent() == nullptr && !present->rsm()->thread().isHeld()) {
        ZephanRSMSingleTon::destroyInstance();
    }
});

/// Logs that no controller can be made, unless that is just being logged: the line may come back as a message
/// that needs one.
void logCreationError(int error) {
    static std::atomic<bool> logging{false};
    if (logging.exchange(true)) {
        return;
    }
    const platform::ScopeGuard over([] { logging = false; });
    KRXLog(level::kForce, "CreateMutex error: %d\n", error);
}

}  // namespace

ZephanRSMSingleTon::Reference ZephanRSMSingleTon::existing() noexcept {
    return published->get();
}

ZephanRSMSingleTon::Reference ZephanRSMSingleTon::getInstance() {
    if (Reference present = existing()) {
        return present;
    }
    Reference created;
    try {
        created.reset(new ZephanRSMSingleTon);
    } catch (const std::exception&) {
        return nullptr;  // memory ran out
    }
    if (const int error = created->creationError(); error != 0) {
        logCreationError(error);
        return nullptr;
    }
    Reference present = published->publishFirst(created);
    // Only now: the line may come back as a message, which must find the controller.
    if (present == created && created->configHandler_ != nullptr &&
        !created->configHandler_->getLogManager().isComplete()) {
        KRXLog(level::kForce, "new Failed in LogManager of LogManager. \n");
    }
    return present;
}

void ZephanRSMSingleTon::destroyInstance() {
    const Reference present = existing();
    if (present == nullptr) {
        return;
    }
    // Also when the stopping thread is unwound while it waits or logs: one that starts nothing must not stay.
    const platform::ScopeGuard removal([&present] {
        published->withdraw(present);
        present->closeSchedule();
        if (present->configHandler_ != nullptr) {
            present->configHandler_->getLogManager().close();
        }
    });
    // What is logged while the thread ends still reaches the log file.
    present->rsm_->thread().stop();
}

ZephanRSMSingleTon::ZephanRSMSingleTon() : configHandler_(new (std::nothrow) ConfigHandler) {}

ZephanRSMSingleTon::~ZephanRSMSingleTon() = default;

int ZephanRSMSingleTon::creationError() const noexcept {
    const int error = rsm_->creationError();
    return error != 0 ? error : resumeFileLock_.creationError();
}
