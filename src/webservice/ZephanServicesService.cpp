#include "webservice/ZephanServicesService.h"

#include "platform/agent/Logging.h"
#include "platform/agent/Messaging.h"
#include "platform/portable/Guard.h"
#include "webservice/ConnectMessage.h"
#include "webservice/DisconnectMessage.h"
#include "webservice/Operations.h"
#include "webservice/ZephanServicesMessages.h"

namespace KRX::Services::ZephanServicesNS {

using platform::kFailure;
using platform::kSuccess;

ZephanServicesService::ZephanServicesService()
    : Service("ZephanServices", "urn:corvane-krx:urn:corvane-krx:ZephanServices_v1_0") {}

std::int8_t ZephanServicesService::CreateMessage(const char* operation,
                                                 Messaging::WebServiceMessage* message) {
    // When memory runs out there is no message pair, as for an unknown operation.
    const std::int8_t result = platform::guarded(kFailure, [&] {
        if (message == nullptr) {
            return kFailure;
        }
        ZephanServicesMessages messages(serviceName(), "", serviceNamespace());
        return messages.CreateMessage(operation, *message);
    });
    return result == kSuccess ? result : platform::answerAfter(kFailure, [&] {
        KRXLog(level::kError,
               "ZephanServicesService::CreateMessage Unable to create message for %s operation.\n",
               operation == nullptr ? "" : operation);
    });
}

std::int8_t ZephanServicesService::Execute(Messaging::WebServiceMessage* message) {
    return platform::guarded(kFailure, [&] {
        if (message == nullptr) {
            return kFailure;
        }
        switch (operationNamed(message->GetRequestHeader().GetOperation())) {
            case Operation::Connect:
                return executeConnect(*message);
            case Operation::Disconnect:
                return executeDisconnect(*message);
            case Operation::Unknown:
                break;
        }
        return kFailure;
    });
}

std::int8_t ZephanServicesService::executeConnect(Messaging::WebServiceMessage& message) {
    const auto* const request = dynamic_cast<const ConnectMessage*>(message.GetRequestMsg());
    auto* const response = dynamic_cast<ConnectResponseMessage*>(message.GetResponseMsg());
    if (request == nullptr || response == nullptr) {
        return kFailure;
    }
    std::int32_t currentPollingRate = 0;
    const std::int8_t result =
        Connect(request->pollDuration(), request->pollingRate(), currentPollingRate, message.GetContext());
    response->setCurrentPollingRate(currentPollingRate);
    return result;
}

std::int8_t ZephanServicesService::executeDisconnect(Messaging::WebServiceMessage& message) {
    const auto* const request = dynamic_cast<const DisconnectMessage*>(message.GetRequestMsg());
    const auto* const response = dynamic_cast<const DisconnectResponseMessage*>(message.GetResponseMsg());
    if (request == nullptr || response == nullptr || response->result() == nullptr) {
        return kFailure;
    }
    return Disconnect(request->memberName(), *response->result(), message.GetContext());
}

std::int8_t ZephanServicesService::Cleanup(Messaging::WebServiceMessage* message) {
    return platform::guarded(kFailure, [&] {
        if (message != nullptr && ZephanServicesMessages::Cleanup(*message) == 0) {
            return kSuccess;
        }
        const char* const operation =
            message == nullptr ? nullptr : message->GetRequestHeader().GetOperation();
        KRXLog(level::kError, "ZephanServicesService::Cleanup Unable to clean-up message for %s operation.\n",
               operation == nullptr ? "" : operation);
        return kFailure;
    });
}

}  // namespace KRX::Services::ZephanServicesNS
