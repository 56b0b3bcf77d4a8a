#include "sim/host/ServiceCall.h"

#include "lib/Serializer.h"
#include "platform/agent/Messaging.h"

#include <stdexcept>

namespace sim {

namespace {

std::string requestXml(const std::string& operation, const std::vector<Assignment>& subElements) {
    KRX::Messaging::Serializer request;
    request.openElement(operation);
    request.writeAttribute("xmlns", kServiceNamespace);
    for (const auto& [name, value] : subElements) {
        if (value) {
            request.openElement(name);
            request.writeText(*value);
            request.closeElement(name);
        }
    }
    request.closeElement(operation);
    return request.written();
}

}  // namespace

ServiceAnswer callService(ZPService& service, const std::string& operation,
                          const std::vector<Assignment>& subElements) {
    KRX::Messaging::WebServiceMessage message;
    if (service.CreateMessage(operation.c_str(), &message) != 0) {
        return {-1, "create", std::nullopt, "no such operation"};
    }
    ServiceAnswer answer{-1, "create", std::nullopt, {}};
    try {
        agent::readMessage(requestXml(operation, subElements), *message.GetRequestMsg());
        answer.stage = "execute";
        answer.result = service.Execute(&message);
        answer.response = agent::writeMessage(*message.GetResponseMsg());
    } catch (const std::runtime_error& error) {
        answer.remark = error.what();
    }
    service.Cleanup(&message);
    if (answer.response) {
        answer.stage = "cleanup";
    }
    return answer;
}

}  // namespace sim
