// The smallest agent: loads the library, uses each of its families once and goes. An integrator's own agent
// does the same with its own libraries in place of the stand-in's.
#include "ZephanRSMLogger.h"
#include "lib/AgentHost.h"
#include "lib/Serializer.h"
#include "platform/agent/Logging.h"
#include "platform/agent/Messaging.h"

#include <array>
#include <cstdio>
#include <stdexcept>
#include <string>

#include <dlfcn.h>

namespace {

/// The loaded library; each export is looked up by its name, with the type that the public header gives it.
class Library final {
  public:
    explicit Library(const char* path) : handle_(::dlopen(path, RTLD_NOW | RTLD_LOCAL)) {
        if (handle_ == nullptr) {
            throw std::runtime_error(::dlerror());
        }
    }
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;
    ~Library() { ::dlclose(handle_); }

    template <typename Function>
    Function* find(const char* name) const {
        return reinterpret_cast<Function*>(::dlsym(handle_, name));
    }

  private:
    void* handle_;
};
#define EXPORT(library, name) (*(library).find<decltype(name)>(#name))

void useAll(const Library& library, ZPServiceAgent* agent, const char* configuration,
            const char* scheduleFile) {
    void* dataSource = nullptr;
    void* rsm = nullptr;
    void* webService = nullptr;
    // The data source comes before RSM, which picks up a stored schedule.
    EXPORT(library, ZPXRSMDSStartup)(&dataSource, scheduleFile);
    if (EXPORT(library, ZPXRSMLoggerStatup)(configuration) == 0) {
        KRXLogSetFunc(&EXPORT(library, ZPXRSMLoggerLog));
        KRXLogSetAuditFunc(&EXPORT(library, ZPXRSMLoggerAudit));
    }
    EXPORT(library, ZPRSMExtnStartup)(&rsm, agent, configuration);
    EXPORT(library, ZPXRSMWSStartup)(&webService, agent);

    // A command with its answer, which goes back for release.
    std::array<char, 12> name{"PollingRate"};
    std::array<char, 3> value{"30"};
    Prop property{name.data(), nullptr, nullptr, value.data()};
    const PropList input{&property, 1};
    PropList* answer = nullptr;
    EXPORT(library, ZPXRSMDSExectue)(nullptr, nullptr, "ScheduleRSM", &input, &answer);
    std::printf("ScheduleRSM: %s\n", answer == nullptr ? "no answer" : answer->properties[0].value);
    EXPORT(library, ZPXRSMDSDestroyPropList)(nullptr, nullptr, answer);

    // A web service call: the request is read into the message, the response written from it.
    ZPService* service = nullptr;
    EXPORT(library, ZPXRSMWSCreateService)(webService, &service);
    {
        KRX::Messaging::WebServiceMessage call;
        service->CreateMessage("disconnect", &call);
        agent::readMessage("<disconnect><memberName>operator-7</memberName></disconnect>",
                           *call.GetRequestMsg());
        service->Execute(&call);
        std::printf("%s\n", agent::writeMessage(*call.GetResponseMsg()).c_str());
        service->Cleanup(&call);
    }
    EXPORT(library, ZPXRSMWSDestroyService)(webService, service);

    EXPORT(library, ZPXRSMLoggerLog)(30, "A log message\n");
    EXPORT(library, ZPXRSMLoggerAudit)("An audit message\n");

    EXPORT(library, ZPXRSMWSShutdown)(webService);
    EXPORT(library, ZPRSMExtnShutdown)(rsm);
    EXPORT(library, ZPXRSMDSShutdown)();
    EXPORT(library, ZPXRSMLoggerShutdown)();
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fprintf(stderr, "usage: %s LIBRARY CONFIGURATION SCHEDULE-FILE\n", argv[0]);
        return 2;
    }
    agent::AgentHost host;
    const Library library(argv[1]);
    useAll(library, host.serviceAgent(), argv[2], argv[3]);
    return 0;
}
