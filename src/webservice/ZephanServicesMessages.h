#pragma once

#include "webservice/ServiceMessages.h"

#include <cstdint>

namespace KRX::Messaging {
class SerializableString;
class WebServiceMessage;
}  // namespace KRX::Messaging

namespace KRX::Services::ZephanServicesNS {

/// The message set of the service: builds the request and response of a call into the host's message, and
/// releases afterwards what stays the module's. Made for one step of a call.
class ZephanServicesMessages final : public ServiceMessages {
  public:
    using ServiceMessages::ServiceMessages;

    /// 0, or -1 for an unknown operation. Throws std::bad_alloc. Builds both messages or none.
    std::int8_t CreateMessage(const char* operation, Messaging::WebServiceMessage& message);
    std::int8_t CreateConnectMessage(Messaging::WebServiceMessage& message, std::int32_t pollDuration,
                                     std::int32_t pollingRate, std::int32_t currentPollingRate);
    /// The result object stays the module's until `Cleanup`.
    std::int8_t CreateDisconnectMessage(Messaging::WebServiceMessage& message, const char* memberName,
                                        Messaging::SerializableString* result);
    /// 0, or -1 for an unknown operation.
    static std::int8_t Cleanup(Messaging::WebServiceMessage& message);

  private:
    void fillHeader(Messaging::WebServiceMessage& message, const char* operation);
};

}  // namespace KRX::Services::ZephanServicesNS
