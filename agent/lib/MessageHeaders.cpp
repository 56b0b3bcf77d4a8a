#include "platform/agent/Messaging.h"

#include <memory>

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
