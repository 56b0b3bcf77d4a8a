#include "webservice/ZephanServicesMessages.h"

#include "platform/agent/Messaging.h"
#include "webservice/ConnectMessage.h"
#include "webservice/DisconnectMessage.h"
#include "webservice/Operations.h"

#include <memory>
#include <new>

namespace KRX::Services::ZephanServicesNS {

std::int8_t ZephanServicesMessages::CreateMessage(const char* operation,
                                                  Messaging::WebServiceMessage& message) {
    switch (operationNamed(operation)) {
        case Operation::Connect:
            return CreateConnectMessage(message, 0, 0, 0);
        case Operation::Disconnect: {
            auto result = std::make_unique<Messaging::SerializableString>("SerializableString", nullptr);
            const std::int8_t built = CreateDisconnectMessage(message, nullptr, result.get());
            static_cast<void>(result.release());  // to be deleted by Cleanup
            return built;
        }
        case Operation::Unknown:
            break;
    }
    return -1;
}

void ZephanServicesMessages::fillHeader(Messaging::WebServiceMessage& message, const char* operation) {
    message.SetRequestUri(requestUri());
    message.SetIdempotent(1);
    message.GetRequestHeader().SetServiceName(serviceName());
    message.GetRequestHeader().SetOperation(operation);
    if (message.GetRequestHeader().GetOperation() == nullptr) {
        throw std::bad_alloc();  // without the name nobody would know later what was built here
    }
}

std::int8_t ZephanServicesMessages::CreateConnectMessage(Messaging::WebServiceMessage& message,
                                                         std::int32_t pollDuration, std::int32_t pollingRate,
                                                         std::int32_t currentPollingRate) {
    auto request = std::make_unique<ConnectMessage>(kConnect, serviceNamespace(), pollDuration, pollingRate);
    auto response =
        std::make_unique<ConnectResponseMessage>("connectResponse", serviceNamespace(), currentPollingRate);
    fillHeader(message, kConnect);
    message.SetRequestMsg(request.release());
    message.SetResponseMsg(response.release());
    return 0;
}

std::int8_t ZephanServicesMessages::CreateDisconnectMessage(Messaging::WebServiceMessage& message,
                                                            const char* memberName,
                                                            Messaging::SerializableString* result) {
    auto request = std::make_unique<DisconnectMessage>(kDisconnect, serviceNamespace(), memberName);
    auto response =
        std::make_unique<DisconnectResponseMessage>("disconnectResponse", serviceNamespace(), result);
    fillHeader(message, kDisconnect);
    message.SetRequestMsg(request.release());
    message.SetResponseMsg(response.release());
    return 0;
}

std::int8_t ZephanServicesMessages::Cleanup(Messaging::WebServiceMessage& message) {
    if (operationNamed(message.GetRequestHeader().GetOperation()) == Operation::Unknown) {
        return -1;
    }
    if (auto* const response = dynamic_cast<DisconnectResponseMessage*>(message.GetResponseMsg())) {
        delete response->takeResult();
    }
    return 0;
}

}  // namespace KRX::Services::ZephanServicesNS
