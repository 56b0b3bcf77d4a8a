#include "webservice/WebServiceRequestMessage.h"

#include <cstring>

namespace KRX::Messaging {

WebServiceRequestMessage::WebServiceRequestMessage(const char* elementName, const char* elementNamespace)
    : Serializable(elementName, nullptr, 0, 1) {
    RegisterAttribute("xmlns", 0, nullptr);
    delanddup(namespace_, elementNamespace);  // last: no destructor runs for what throws above
}

WebServiceRequestMessage::~WebServiceRequestMessage() {
    delete[] namespace_;
}

std::int8_t WebServiceRequestMessage::SetAttributeText(const char* /*name*/, const char* /*text*/) {
    return -1;
}

std::int8_t WebServiceRequestMessage::SetElementText(const char* /*text*/) {
    return 0;
}

std::int8_t WebServiceRequestMessage::SetSubElementText(const char* /*name*/, const char* /*text*/) {
    return 0;
}

const char* WebServiceRequestMessage::GetAttributeText(const char* name, bool& release) {
    if (std::strcmp(name, "xmlns") != 0) {
        return nullptr;
    }
    release = false;
    return namespace_;
}

const char* WebServiceRequestMessage::GetElementText(bool& release) {
    release = false;
    return nullptr;
}

const char* WebServiceRequestMessage::GetSubElementText(const char* /*name*/, bool& release,
                                                        unsigned int /*index*/) {
    release = false;
    return nullptr;
}

bool WebServiceRequestMessage::HasElementText() {
    return false;
}

}  // namespace KRX::Messaging
