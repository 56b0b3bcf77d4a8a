// Exports of the web-service extension.
#include "ZephanRSMLogger.h"
#include "controller/ZephanRSMSingleTon.h"
#include "entry/Lifecycle.h"
#include "platform/agent/Logging.h"
#include "platform/portable/EchoWithoutWait.h"
#include "platform/portable/Guard.h"
#include "webservice/ZephanServicesServiceImpl.h"

extern "C" {

std::int8_t ZPXRSMWSStartup(void** handle, ZPServiceAgent* serviceAgent) {
    return platform::guarded(platform::kFailure, [&] {
        if (handle == nullptr) {
            KRXLog(level::kError, "\nRSMWSExtnStartup: ZephanServices Invalid (null) handle\n");
            return platform::kFailure;
        }
        const auto controller = [] {
            const entry::Lifecycle lifecycle(entry::Lifecycle::Kind::Start);
            return lifecycle.controllerForStart();
        }();
        if (controller != nullptr) {
            controller->setServiceAgent(serviceAgent);
            *handle = controller.get();
        } else {
            KRXLog(level::kError, "\n Error in getting ZephanRSMSingleTon pointer in %s", lines::kWebService);
        }
        KRXLog(level::kForce, lines::kStarted, lines::kWebService);
        return platform::kSuccess;
    });
}

std::int8_t ZPXRSMWSShutdown(void* handle) {
    return platform::answerAfter(handle == nullptr ? platform::kFailure : platform::kSuccess, [handle] {
        const platform::EchoWithoutWait echo(platform::EchoWithoutWait::Kind::Stop);
        if (handle == nullptr) {
            KRXLog(level::kError, "RSMWSExtnShutdown: null ph\n");
        } else {
            KRXLog(level::kForce, lines::kStopped, lines::kWebService);
        }
    });
}

std::int8_t ZPXRSMWSCreateService(void* handle, ZPService** service) {
    if (service == nullptr || handle == nullptr) {
        return platform::answerAfter(platform::kFailure, [service] {
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
    *service = platform::guarded<ZPService*>(nullptr, [] { return new ZephanServicesServiceImpl; });
    return platform::answerAfter(platform::kSuccess, [] {
        KRXLog(level::kForce, "Custom HVK Extension: %s CreateService complete.\n", lines::kWebService);
    });
}

std::int8_t ZPXRSMWSDestroyService(void* /*handle*/, ZPService* service) {
    delete service;
    return platform::answerAfter(platform::kSuccess, [] {
        KRXLog(level::kForce, "Custom HVK Extension: %s DestroyService complete.\n", lines::kWebService);
    });
}
}
