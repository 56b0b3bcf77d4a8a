#pragma once

#include "ZephanRSMService.h"

namespace KRX::Messaging {
class SerializableString;
namespace Headers {
class SecurityContext;
}
}  // namespace KRX::Messaging

namespace KRX::Services::ZephanServicesNS {

/// The web service "ZephanServices": dispatches a call to its operation. What the host may do when, and the
/// threads: see `KRX::Services::Service`.
class ZephanServicesService : public Service {
  public:
    ZephanServicesService();
    std::int8_t CreateMessage(const char* operation, Messaging::WebServiceMessage* message) override;
    std::int8_t Execute(Messaging::WebServiceMessage* message) override;
    std::int8_t Cleanup(Messaging::WebServiceMessage* message) override;

    /// Minutes and seconds; `currentPollingRate` receives the agent's own poll interval in seconds. 0 or -1.
    virtual std::int8_t Connect(std::int32_t pollDuration, std::int32_t pollingRate,
                                std::int32_t& currentPollingRate,
                                Messaging::Headers::SecurityContext& context) = 0;
    /// The outcome is put into `result`. 0 or -1.
    virtual std::int8_t Disconnect(const char* memberName, Messaging::SerializableString& result,
                                   Messaging::Headers::SecurityContext& context) = 0;

  private:
    // -1, too, for a message whose objects are not those of the operation that its header names.
    std::int8_t executeConnect(Messaging::WebServiceMessage& message);
    std::int8_t executeDisconnect(Messaging::WebServiceMessage& message);
};

}  // namespace KRX::Services::ZephanServicesNS
