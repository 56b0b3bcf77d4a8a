// Exports of the web-service extension.
#include "ZephanRSMLogger.h"
#include "controller/ZephanRSMSingleTon.h"
#include "entry/Guard.h"
#include "entry/Lifecycle.h"
#include "platform/agent/Logging.h"
#include "webservice/ZephanServicesServiceImpl.h"

namespace {

constexpr char kExtension[] = "RSM WebService Extension";

}  // namespace

extern "C" {

std::int8_t ZPXRSMWSStartup(void** handle, ZPServiceAgent* serviceAgent) {
    if (handle == nullptr) {
        KRXLog(level::kError, "\nRSMWSExtnStartup: ZephanServices Invalid (null) handle\n");
        return entry::kFailure;
    }
    return entry::guarded(entry::kFailure, [&] {
        const auto controller = [] {
            const entry::Lifecycle lifecycle(entry::Lifecycle::Kind::Start);
            return lifecycle.controllerForStart();
        }();
        if (controller != nullptr) {
            controller->setServiceAgent(serviceAgent);
            *handle = controller.get();
        } else {
            KRXLog(level::kError, "\n Error in getting ZephanRSMSingleTon pointer in %s", kExtension);
        }
        KRXLog(level::kForce, "Custom HVK Extension: %s startup complete.\n", kExtension);
        return entry::kSuccess;
    });
}

std::int8_t ZPXRSMWSShutdown(void* handle) {
    if (handle == nullptr) {
        KRXLog(level::kError, "RSMWSExtnShutdown: null ph\n");
        return entry::kFailure;
    }
    KRXLog(level::kForce, "Custom HVK Extension: %s shutdown complete.\n", kExtension);
    return entry::kSuccess;
}

std::int8_t ZPXRSMWSCreateService(void* handle, ZPService** service) {
    if (service == nullptr) {
        KRXLog(level::kError, "ZephanServices Invalid (null) ppSvc\n");
        return entry::kFailure;
    }
    if (handle == nullptr) {
        KRXLog(
            level::kError,
            "RSM Singleton Object is not there. Can't Continue. RSM Singleton should have been initialized in WSEStartup\n");
        return entry::kFailure;
    }
    using KRX::Services::ZephanServicesNS::ZephanServicesServiceImpl;
    *service = entry::guarded<ZPService*>(nullptr, [] { return new ZephanServicesServiceImpl; });
    KRXLog(level::kForce, "Custom HVK Extension: %s CreateService complete.\n", kExtension);
    return entry::kSuccess;
}

std::int8_t ZPXRSMWSDestroyService(void* /*handle*/, ZPService* service) {
    delete service;
    KRXLog(level::kForce, "Custom HVK Extension: %s DestroyService complete.\n", kExtension);
    return entry::kSuccess;
}
}
