#include "platform/agent/Messaging.h"

#include <utility>

namespace KRX::Messaging {

WebServiceMessage::WebServiceMessage() : context_("SecurityContext") {}

WebServiceMessage::~WebServiceMessage() {
    delete request_;
    delete response_;
    delete[] requestUri_;
}

std::int8_t WebServiceMessage::SetRequestUri(const char* uri) {
    return delanddup(requestUri_, uri);
}

std::int8_t WebServiceMessage::SetIdempotent(int flag) {
    idempotent_ = flag;
    return 0;
}

Serializable* WebServiceMessage::SetRequestMsg(Serializable* request) {
    return std::exchange(request_, request);
}

Serializable* WebServiceMessage::SetResponseMsg(Serializable* response) {
    return std::exchange(response_, response);
}

}  // namespace KRX::Messaging
