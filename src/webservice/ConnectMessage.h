#pragma once

#include "webservice/WebServiceRequestMessage.h"

namespace KRX::Services::ZephanServicesNS {

/// Request of "connect".
class ConnectMessage final : public Messaging::WebServiceRequestMessage {
  public:
    ConnectMessage(const char* elementName, const char* elementNamespace, std::int32_t pollDuration,
                   std::int32_t pollingRate);
    std::int8_t SetSubElementText(const char* name, const char* text) override;
    const char* GetSubElementText(const char* name, bool& release, unsigned int index) override;

    std::int32_t pollDuration() const noexcept { return pollDuration_; }  ///< minutes
    std::int32_t pollingRate() const noexcept { return pollingRate_; }    ///< seconds

  private:
    std::int32_t* numberNamed(const char* name) noexcept;

    std::int32_t pollDuration_;
    std::int32_t pollingRate_;
};

/// Response of "connect".
class ConnectResponseMessage final : public Messaging::WebServiceRequestMessage {
  public:
    ConnectResponseMessage(const char* elementName, const char* elementNamespace,
                           std::int32_t currentPollingRate);
    std::int8_t SetSubElementText(const char* name, const char* text) override;
    const char* GetSubElementText(const char* name, bool& release, unsigned int index) override;

    void setCurrentPollingRate(std::int32_t seconds) noexcept { currentPollingRate_ = seconds; }

  private:
    std::int32_t currentPollingRate_;
};

}  // namespace KRX::Services::ZephanServicesNS
