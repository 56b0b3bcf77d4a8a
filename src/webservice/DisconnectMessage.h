#pragma once

#include "webservice/WebServiceRequestMessage.h"

#include <utility>

namespace KRX::Services::ZephanServicesNS {

/// Request of "disconnect".
class DisconnectMessage final : public Messaging::WebServiceRequestMessage {
  public:
    /// Keeps a copy of the member name, which may be null.
    DisconnectMessage(const char* elementName, const char* elementNamespace, const char* memberName);
    ~DisconnectMessage() override;
    std::int8_t SetSubElementText(const char* name, const char* text) override;
    const char* GetSubElementText(const char* name, bool& release, unsigned int index) override;

    const char* memberName() const noexcept { return memberName_; }

  private:
    char* memberName_ = nullptr;
};

/// Response of "disconnect".
class DisconnectResponseMessage final : public Messaging::WebServiceRequestMessage {
  public:
    /// The result object is not owned, must stay until it is taken, and may be null.
    DisconnectResponseMessage(const char* elementName, const char* elementNamespace,
                              Messaging::SerializableString* result);

    Messaging::SerializableString* result() const noexcept { return result_; }
    Messaging::SerializableString* takeResult() noexcept { return std::exchange(result_, nullptr); }

  private:
    Messaging::SerializableString* result_;
};

}  // namespace KRX::Services::ZephanServicesNS
