#include "controller/ZephanRSMSingleTon.h"

#include "controller/ModuleGate.h"
#include "logging/ConfigHandler.h"
#include "platform/agent/Logging.h"
#include "platform/agent/ServiceAgent.h"
#include "platform/agent/Threads.h"
#include "scheduling/ScheduleRSMHandler.h"

#include <exception>
#include <new>

namespace {

constexpr unsigned int kThreadEndTimeout = 3000;  // milliseconds

std::atomic<ZephanRSMSingleTon*> instance{nullptr};
std::recursive_mutex instanceLock;
bool creating = false;  // under the instance lock

}  // namespace

ZephanRSMSingleTon* ZephanRSMSingleTon::getInstance() noexcept {
    if (ZephanRSMSingleTon* const existing = instance) {
        return existing;
    }
    const std::lock_guard lock(instanceLock);
    // A line logged by the construction may come back to here, through the host, before there is an instance.
    if (instance != nullptr || creating) {
        return instance;
    }
    creating = true;
    try {
        auto* const created = new (std::nothrow) ZephanRSMSingleTon;
        if (created != nullptr && created->threadMutex_.creationError() == 0) {
            instance = created;
        } else {
            delete created;
        }
    } catch (const std::exception&) {
        // Memory ran out within the construction: as when there is none for the object itself.
    }
    creating = false;
    return instance;
}

ZephanRSMSingleTon::ZephanRSMSingleTon()
    : registrationProxy_("Registration", "/krx/Registration", "urn:corvane-krx:Registration_v1_1") {
    if (const int error = threadMutex_.creationError(); error != 0) {
        KRXLog(250, "CreateMutex error: %d\n", error);
        return;
    }
    configHandler_.reset(new (std::nothrow) ConfigHandler);
}

void ZephanRSMSingleTon::destroyInstance() noexcept {
    ZephanRSMSingleTon* const existing = instance;
    if (existing == nullptr) {
        return;
    }
    existing->stopPollingThread();
    const gate::Alone alone;
    delete existing;
    instance = nullptr;
}

ZephanRSMSingleTon::~ZephanRSMSingleTon() {
    // `reset` forgets before it releases: what is logged meanwhile finds no half-destroyed routing.
    configHandler_.reset();
    scheduleHandler_.reset();
}

void ZephanRSMSingleTon::stopPollingThread() noexcept {
    if (threadMutex_.wait() == platform::Mutex::Wait::Obtained) {
        closing_ = true;
        threadMutex_.release();
    }
    KRXThread* const thread = pollingThread_;
    if (thread == nullptr) {
        return;
    }
    const bool ended = KRXWaitForThread(thread, nullptr, kThreadEndTimeout) == 0;
    KRXThreadDestroy(thread);
    KRXLog(250, "%s",
           ended ? "\n Force Polling Thread shutdown complete."
                 : "\n Force Polling Thread FORCEFULLY shutdown complete.");
    delete thread;
    pollingThread_ = nullptr;
}

void ZephanRSMSingleTon::setServiceAgent(KRX::ServiceAgentNS::ServiceAgent* serviceAgent) {
    if (serviceAgent == nullptr) {
        return;
    }
    KRXLog(40, "\n *** Setting Service Agent pointer in ZephanRSMSingleTon *** \n");
    serviceAgent_ = serviceAgent;
    setCredentials();
}

void ZephanRSMSingleTon::setCredentials() {
    KRX::ServiceAgentNS::VirtualAsset* const asset = serviceAgent_.load()->GetAsset(0);
    if (asset == nullptr) {
        return;
    }
    const auto& record = asset->GetAssetProfile();
    registrationProxy_.SetOCM(asset->GetOCM());
    KRX::Messaging::Headers::Credentials credentials("Credentials");
    credentials.SetMemberId(record.GetMemberName());
    credentials.SetPassword(record.GetMemberPassword());
    KRX::Messaging::Headers::SecurityContext context("SecurityContext");
    context.SetCredentials(&credentials);
    registrationProxy_.SetSecurityContext(context);
}

void ZephanRSMSingleTon::createScheduleHandler(const char* scheduleFilePath) noexcept {
    if (scheduleHandler_ || scheduleFilePath == nullptr) {
        return;
    }
    try {
        scheduleHandler_ = std::make_unique<ScheduleRSMHandler>(scheduleFilePath);
        scheduleHandler_->reportLoad();
    } catch (const std::bad_alloc&) {
        // No handler: the callers report that.
    }
}

ZephanRSMSingleTon::State ZephanRSMSingleTon::state() const {
    const std::lock_guard lock(stateLock_);
    return state_;
}

std::int32_t ZephanRSMSingleTon::getRSMMode() const {
    return state().rsmMode;
}

void ZephanRSMSingleTon::setGracePeriod(double minutes) {
    const std::lock_guard lock(stateLock_);
    state_.gracePeriod = minutes;
}

void ZephanRSMSingleTon::setPollingRate(std::int32_t seconds) {
    const std::lock_guard lock(stateLock_);
    state_.pollingRate = seconds;
}

std::int64_t ZephanRSMSingleTon::getDelayedEndTime() const {
    return state().delayedEndTime;
}
