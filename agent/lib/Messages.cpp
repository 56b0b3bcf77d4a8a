#include "platform/agent/Messaging.h"

#include <memory>
#include <utility>

namespace KRX::Messaging::Headers {

RequestHeader::RequestHeader() : Serializable("RequestHeader", nullptr, 0, 1) {}

RequestHeader::~RequestHeader() {
    delete[] serviceName_;
    delete[] operation_;
}

void RequestHeader::SetServiceName(const char* name) {
    delanddup(serviceName_, name);
}
void RequestHeader::SetOperation(const char* operation) {
    delanddup(operation_, operation);
}
const char* RequestHeader::GetServiceName() const {
    return serviceName_;
}
const char* RequestHeader::GetOperation() const {
    return operation_;
}

Credentials::Credentials(const char* elementName) : Serializable(elementName, nullptr, 0, 1) {}

Credentials::~Credentials() {
    delete[] memberId_;
    delete[] password_;
}

void Credentials::SetMemberId(const char* memberId) {
    delanddup(memberId_, memberId);
}
void Credentials::SetPassword(const char* password) {
    delanddup(password_, password);
}
const char* Credentials::GetMemberId() const {
    return memberId_;
}
const char* Credentials::GetPassword() const {
    return password_;
}

SecurityContext::SecurityContext(const char* elementName) : Serializable(elementName, nullptr, 0, 1) {}

SecurityContext::~SecurityContext() {
    delete credentials_;
    delete[] authenticationToken_;
}

std::int8_t SecurityContext::SetCredentials(const Credentials* credentials) {
    if (credentials == nullptr) {
        return -1;
    }
    auto copy = std::make_unique<Credentials>(credentials->GetElementName());
    copy->SetMemberId(credentials->GetMemberId());
    copy->SetPassword(credentials->GetPassword());
    delete credentials_;
    credentials_ = copy.release();
    return 0;
}

const Credentials* SecurityContext::GetCredentials() const {
    return credentials_;
}

std::int8_t SecurityContext::SetAuthenticationToken(const char* token) {
    return delanddup(authenticationToken_, token);
}

const char* SecurityContext::GetAuthenticationToken() const {
    return authenticationToken_;
}

}  // namespace KRX::Messaging::Headers

namespace KRX::Messaging {

SerializableString::SerializableString(const char* elementName, const char* value)
    : Serializable(elementName, nullptr, 0, 1) {
    delanddup(value_, value);
}

SerializableString::~SerializableString() {
    delete[] value_;
}

std::int8_t SerializableString::SetElementText(const char* text) {
    return delanddup(value_, text);
}

const char* SerializableString::GetElementText(bool& release) {
    release = false;
    return value_;
}

bool SerializableString::HasElementText() {
    return true;
}

void SerializableString::SetValue(const char* value) {
    delanddup(value_, value);
}

const char* SerializableString::GetValue() const {
    return value_;
}

SerializableArray::SerializableArray() = default;

SerializableArray::~SerializableArray() = default;

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
