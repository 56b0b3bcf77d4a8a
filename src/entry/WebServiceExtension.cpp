// Exports of the web-service extension.
#include "ZephanRSMLogger.h"
#include "controller/ZephanRSMSingleTon.h"
#include "entry/Guard.h"
#include "entry/Lifecycle.h"
#include "platform/EchoWithoutWait.h"
#include "platform/agent/Logging.h"
#include "webservice/ZephanServicesServiceImpl.h"

namespace {

constexpr char kExtension[] = "RSM WebService Extension";

}  // namespace

extern "C" {

std::int8_t ZPXRSMWSStartup(void** handle, ZPServiceAgent* serviceAgent) {
    return entry::guarded(entry::kFailure, [&] {
        if (handle == nullptr) {
            KRXLog(level::kError, "\nRSMWSExtnStartup: ZephanServices Invalid (null) handle\n");
            return entry::kFailure;
        }
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
    return entry::answerAfter(handle == nullptr ? entry::kFailure : entry::kSuccess, [handle] {
        const platform::EchoWithoutWait echo(platform::EchoWithoutWait::Kind::Stop);
        if (handle == nullptr) {
            KRXLog(level::kError, "RSMWSExtnShutdown: null ph\n");
        } else {
            KRXLog(level::kForce, "Custom HVK Extension: %s shutdown complete.\n", kExtension);
        }
    });
}

std::int8_t ZPXRSMWSCreateService(void* handle, ZPService** service) {
    if (service == nullptr || handle == nullptr) {
        return entry::answerAfter(entry::kFailure, [service] {
            if (service == nullptr) {
                KRXLog(level::kError, "ZephanServices Invalid (null) ppSvc\n");
            } else {
                KRXLog(
                    level::kError,
                    "RSM Singleton Object is not there. Can't Continue. RSM Singleton should have been initialized in WSEStartup\n");
            }
        });
    }
    using KRX::Services::ZephanServicesNS::ZephanServicesServiceImpl;
    *service = entry::guarded<ZPService*>(nullptr, [] { return new ZephanServicesServiceImpl; });
    return entry::answerAfter(entry::kSuccess, [] {
        KRXLog(level::kForce, "Custom HVK Extension: %s CreateService complete.\n", kExtension);
    });
}

std::int8_t ZPXRSMWSDestroyService(void* /*handle*/, ZPService* service) {
    delete service;
    return entry::answerAfter(entry::kSuccess, [] {
        KRXLog(level::kForce, "Custom HVK Extension: %s DestroyService complete.\n", kExtension);
    });
}
}
