#include "ZephanRSMService.h"
#include "platform/agent/Utilities.h"

namespace KRX::Services {

Service::Service(const char* serviceName, const char* serviceNamespace)
    : serviceName_(nullptr), serviceNamespace_(nullptr) {
    delanddup(serviceName_, serviceName);
    delanddup(serviceNamespace_, serviceNamespace);
}

Service::~Service() {
    delete[] serviceName_;
    delete[] serviceNamespace_;
}

std::int8_t Service::Cleanup(Messaging::WebServiceMessage* /*message*/) {
    return 0;
}

}  // namespace KRX::Services
