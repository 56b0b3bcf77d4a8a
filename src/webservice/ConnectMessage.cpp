#include "webservice/ConnectMessage.h"

#include "webservice/NumberSubElement.h"

#include <string_view>

namespace KRX::Services::ZephanServicesNS {
namespace {

constexpr char kPollDuration[] = "pollDuration";
constexpr char kPollingRate[] = "pollingRate";
constexpr char kCurrentPollingRate[] = "currentPollingRate";

}  // namespace

ConnectMessage::ConnectMessage(const char* elementName, const char* elementNamespace,
                               std::int32_t pollDuration, std::int32_t pollingRate)
    : WebServiceRequestMessage(elementName, elementNamespace),
      pollDuration_(pollDuration),
      pollingRate_(pollingRate) {
    RegisterSubElement(kPollDuration, 1, 1, nullptr);
    RegisterSubElement(kPollingRate, 1, 1, nullptr);
}

std::int32_t* ConnectMessage::numberNamed(const char* name) noexcept {
    const std::string_view wanted(name);
    if (wanted == kPollDuration) {
        return &pollDuration_;
    }
    return wanted == kPollingRate ? &pollingRate_ : nullptr;
}

std::int8_t ConnectMessage::SetSubElementText(const char* name, const char* text) {
    std::int32_t* const number = numberNamed(name);
    if (number == nullptr) {
        return -1;
    }
    *number = numberOf(text);
    return 0;
}

const char* ConnectMessage::GetSubElementText(const char* name, bool& release, unsigned int /*index*/) {
    const std::int32_t* const number = numberNamed(name);
    release = false;
    return number == nullptr ? nullptr : newNumberText(*number, release);
}

ConnectResponseMessage::ConnectResponseMessage(const char* elementName, const char* elementNamespace,
                                               std::int32_t currentPollingRate)
    : WebServiceRequestMessage(elementName, elementNamespace), currentPollingRate_(currentPollingRate) {
    RegisterSubElement(kCurrentPollingRate, 1, 1, nullptr);
}

std::int8_t ConnectResponseMessage::SetSubElementText(const char* name, const char* text) {
    if (std::string_view(name) != kCurrentPollingRate) {
        return -1;
    }
    currentPollingRate_ = numberOf(text);
    return 0;
}

const char* ConnectResponseMessage::GetSubElementText(const char* name, bool& release,
                                                      unsigned int /*index*/) {
    release = false;
    return std::string_view(name) == kCurrentPollingRate ? newNumberText(currentPollingRate_, release)
                                                         : nullptr;
}

}  // namespace KRX::Services::ZephanServicesNS
