#include "webservice/ZephanServicesServiceImpl.h"

#include "controller/ZephanRSMSingleTon.h"
#include "platform/agent/Logging.h"

namespace KRX::Services::ZephanServicesNS {
namespace {

constexpr std::int32_t kUnknownPollingRate = 300;  // seconds, answered without a controller

}  // namespace

std::int8_t ZephanServicesServiceImpl::Connect(std::int32_t pollDuration, std::int32_t pollingRate,
                                               std::int32_t& currentPollingRate,
                                               Messaging::Headers::SecurityContext& /*context*/) {
    currentPollingRate = kUnknownPollingRate;
    const auto controller = ZephanRSMSingleTon::getInstance();
    if (controller == nullptr) {
        KRXLog(level::kError,
               "Couldn't make force poll in ZephanServicesServiceImpl::Connect as RSMSingleton was null\n");
        return -1;
    }
    // Both are stored by the order itself, in one step: a running thread must not meet one of them alone.
    std::uint32_t currentPollInterval = 0;
    const std::int8_t result = controller->ForcePoll(pollDuration, pollingRate, currentPollInterval);
    currentPollingRate = static_cast<std::int32_t>(currentPollInterval);
    return result;
}

std::int8_t ZephanServicesServiceImpl::Disconnect(const char* memberName,
                                                  Messaging::SerializableString& result,
                                                  Messaging::Headers::SecurityContext& /*context*/) {
    const auto controller = ZephanRSMSingleTon::getInstance();
    if (controller == nullptr) {
        KRXLog(level::kError,
               "Couldn't disconnect in ZephanServicesServiceImpl::Disconnect as RSMSingleton was null\n");
        return -1;
    }
    return controller->Disconnect(memberName, result);
}

}  // namespace KRX::Services::ZephanServicesNS
