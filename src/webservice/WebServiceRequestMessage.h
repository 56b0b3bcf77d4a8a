#pragma once

#include "platform/agent/Messaging.h"

namespace KRX::Messaging {

/// Base of the module's requests and responses: an element with the service's namespace as its "xmlns".
class WebServiceRequestMessage : public Serializable {
  public:
    WebServiceRequestMessage(const char* elementName, const char* elementNamespace);
    ~WebServiceRequestMessage() override;
    std::int8_t SetAttributeText(const char* name, const char* text) override;
    std::int8_t SetElementText(const char* text) override;
    std::int8_t SetSubElementText(const char* name, const char* text) override;
    const char* GetAttributeText(const char* name, bool& release) override;
    const char* GetElementText(bool& release) override;
    const char* GetSubElementText(const char* name, bool& release, unsigned int index) override;
    bool HasElementText() override;

  private:
    char* namespace_ = nullptr;
};

}  // namespace KRX::Messaging
