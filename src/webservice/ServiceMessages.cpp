#include "webservice/ServiceMessages.h"

#include "platform/agent/Utilities.h"

namespace KRX::Services {

ServiceMessages::ServiceMessages(const char* serviceName, const char* requestUri,
                                 const char* serviceNamespace) {
    delanddup(serviceName_, serviceName);
    delanddup(requestUri_, requestUri);
    delanddup(serviceNamespace_, serviceNamespace);
}

ServiceMessages::~ServiceMessages() {
    delete[] serviceName_;
    delete[] requestUri_;
    delete[] serviceNamespace_;
}

}  // namespace KRX::Services
