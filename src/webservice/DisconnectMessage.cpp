#include "webservice/DisconnectMessage.h"

#include <string_view>

namespace KRX::Services::ZephanServicesNS {
namespace {

constexpr char kMemberName[] = "memberName";
constexpr std::string_view kResultElement = "DisconnectResult";

}  // namespace

DisconnectMessage::DisconnectMessage(const char* elementName, const char* elementNamespace,
                                     const char* memberName)
    : WebServiceRequestMessage(elementName, elementNamespace) {
    RegisterSubElement(kMemberName, 1, 1, nullptr);
    delanddup(memberName_, memberName);
}

DisconnectMessage::~DisconnectMessage() {
    delete[] memberName_;
}

std::int8_t DisconnectMessage::SetSubElementText(const char* name, const char* text) {
    return std::string_view(name) == kMemberName ? delanddup(memberName_, text) : std::int8_t{-1};
}

const char* DisconnectMessage::GetSubElementText(const char* name, bool& release, unsigned int /*index*/) {
    release = false;
    return std::string_view(name) == kMemberName ? memberName_ : nullptr;
}

DisconnectResponseMessage::DisconnectResponseMessage(const char* elementName, const char* elementNamespace,
                                                     Messaging::SerializableString* result)
    : WebServiceRequestMessage(elementName, elementNamespace), result_(result) {
    if (result_ != nullptr && result_->GetElementName() != kResultElement) {
        result_->SetElementName(kResultElement.data());
    }
    RegisterSubElement("disconnectResult", result_, 1, nullptr);
}

}  // namespace KRX::Services::ZephanServicesNS
