#include "webservice/ZephanServicesService.h"

#include "platform/agent/Logging.h"
#include "platform/agent/Messaging.h"
#include "webservice/ConnectMessage.h"
#include "webservice/DisconnectMessage.h"
#include "webservice/Operations.h"
#include "webservice/ZephanServicesMessages.h"

#include <exception>

namespace KRX::Services::ZephanServicesNS {

ZephanServicesService::ZephanServicesService()
    : Service("ZephanServices", "urn:corvane-krx:urn:corvane-krx:ZephanServices_v1_0") {}

std::int8_t ZephanServicesService::CreateMessage(const char* operation,
                                                 Messaging::WebServiceMessage* message) {
    std::int8_t result = -1;
    try {
        ZephanServicesMessages messages(serviceName(), "", serviceNamespace());
        if (message != nullptr) {
            result = messages.CreateMessage(operation, *message);
        }
    } catch (const std::exception&) {
        // Memory ran out: there is no message pair, as for an unknown operation.
    }
    if (result != 0) {
        KRXLog(level::kError,
               "ZephanServicesService::CreateMessage Unable to create message for %s operation.\n",
               operation == nullptr ? "" : operation);
        return -1;
    }
    return 0;
}

std::int8_t ZephanServicesService::Execute(Messaging::WebServiceMessage* message) {
    if (message == nullptr) {
        return -1;
    }
    try {
        switch (operationNamed(message->GetRequestHeader().GetOperation())) {
            case Operation::Connect:
                return executeConnect(*message);
            case Operation::Disconnect:
                return executeDisconnect(*message);
            case Operation::Unknown:
                break;
        }
    } catch (const std::exception&) {
        // Memory ran out in the agent's objects; nothing may be thrown into the host.
    }
    return -1;
}

std::int8_t ZephanServicesService::executeConnect(Messaging::WebServiceMessage& message) {
    const auto* const request = dynamic_cast<const ConnectMessage*>(message.GetRequestMsg());
    auto* const response = dynamic_cast<ConnectResponseMessage*>(message.GetResponseMsg());
    if (request == nullptr || response == nullptr) {
        return -1;
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
        return -1;
    }
    return Disconnect(request->memberName(), *response->result(), message.GetContext());
}

std::int8_t ZephanServicesService::Cleanup(Messaging::WebServiceMessage* message) {
    if (message == nullptr || ZephanServicesMessages::Cleanup(*message) != 0) {
        const char* const operation =
            message == nullptr ? nullptr : message->GetRequestHeader().GetOperation();
        KRXLog(level::kError, "ZephanServicesService::Cleanup Unable to clean-up message for %s operation.\n",
               operation == nullptr ? "" : operation);
        return -1;
    }
    return 0;
}

}  // namespace KRX::Services::ZephanServicesNS
