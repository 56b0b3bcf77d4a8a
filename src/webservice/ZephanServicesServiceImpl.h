#pragma once

#include "webservice/ZephanServicesService.h"

namespace KRX::Services::ZephanServicesNS {

/// The operations of "ZephanServices", carried out by the RSM controller.
class ZephanServicesServiceImpl final : public ZephanServicesService {
  public:
    std::int8_t Connect(std::int32_t pollDuration, std::int32_t pollingRate, std::int32_t& currentPollingRate,
                        Messaging::Headers::SecurityContext& context) override;
    std::int8_t Disconnect(const char* memberName, Messaging::SerializableString& result,
                           Messaging::Headers::SecurityContext& context) override;
};

}  // namespace KRX::Services::ZephanServicesNS
