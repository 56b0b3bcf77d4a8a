// Exports of the web-service extension.
#include "ZephanRSMLogger.h"
#include "controller/ModuleGate.h"
#include "controller/ZephanRSMSingleTon.h"
#include "entry/Guard.h"
#include "platform/agent/Logging.h"
#include "webservice/ZephanServicesServiceImpl.h"

namespace {

constexpr char kExtension[] = "RSM WebService Extension";

}  // namespace

extern "C" {

int8_t ZPXRSMWSStartup(void** handle, ZPServiceAgent* serviceAgent) {
    if (handle == nullptr) {
        KRXLog(50, "\nRSMWSExtnStartup: ZephanServices Invalid (null) handle\n");
        return entry::kFailure;
    }
    return entry::guarded(entry::kFailure, [&] {
        const gate::Lifecycle lifecycle;
        const gate::Alone alone;
        if (ZephanRSMSingleTon* const controller = ZephanRSMSingleTon::getInstance()) {
            if (controller->getServiceAgent() == nullptr) {
                controller->setServiceAgent(serviceAgent);
            }
            *handle = controller;
        } else {
            KRXLog(50, "\n Error in getting ZephanRSMSingleTon pointer in %s", kExtension);
        }
        KRXLog(250, "Custom HVK Extension: %s startup complete.\n", kExtension);
        return entry::kSuccess;
    });
}

int8_t ZPXRSMWSShutdown(void* handle) {
    if (handle == nullptr) {
        KRXLog(50, "RSMWSExtnShutdown: null ph\n");
        return entry::kFailure;
    }
    KRXLog(250, "Custom HVK Extension: %s shutdown complete.\n", kExtension);
    return entry::kSuccess;
}

int8_t ZPXRSMWSCreateService(void* handle, ZPService** service) {
    if (service == nullptr) {
        KRXLog(50, "ZephanServices Invalid (null) ppSvc\n");
        return entry::kFailure;
    }
    if (handle == nullptr) {
        KRXLog(50,
               "RSM Singleton Object is not there. Can't Continue. RSM Singleton should have been "
               "initialized in "
               "WSEStartup\n");
        return entry::kFailure;
    }
    using KRX::Services::ZephanServicesNS::ZephanServicesServiceImpl;
    *service = entry::guarded<ZPService*>(nullptr, [] { return new ZephanServicesServiceImpl; });
    KRXLog(250, "Custom HVK Extension: %s CreateService complete.\n", kExtension);
    return entry::kSuccess;
}

int8_t ZPXRSMWSDestroyService(void* /*handle*/, ZPService* service) {
    delete service;
    KRXLog(250, "Custom HVK Extension: %s DestroyService complete.\n", kExtension);
    return entry::kSuccess;
}
}
