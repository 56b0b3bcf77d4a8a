// The smallest agent: loads the library, uses each of its families once and goes. It looks at every result;
// the reason of a failure is in the agent's log. An integrator's own agent does the same with its own
// libraries in place of the stand-in's.
#include "ZephanRSMLogger.h"
#include "lib/AgentHost.h"
#include "lib/Observer.h"
#include "lib/Serializer.h"
#include "platform/agent/Logging.h"
#include "platform/agent/Messaging.h"

#include <array>
#include <atomic>
#include <cstdio>
#include <exception>
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
    Function& find(const char* name) const {
        void* const address = ::dlsym(handle_, name);
        if (address == nullptr) {
            throw std::runtime_error(::dlerror());
        }
        return *reinterpret_cast<Function*>(address);
    }

  private:
    void* handle_;
};
#define EXPORT(name) (library.find<decltype(name)>(#name))

/// The agent's log, on standard error until the module's logger takes it over.
struct Log final : agent::Observer {
    void onLog(int level, std::string_view text) override {
        if (!taken) {
            std::fprintf(stderr, "log %d: %.*s\n", level, static_cast<int>(text.size()), text.data());
        }
    }
    std::atomic<bool> taken = false;
};

int failures = 0;

/// Says when a call failed. True when it did not.
bool succeeded(const char* call, int result) {
    if (result != 0) {
        std::fprintf(stderr, "%s answered %d\n", call, result);
        ++failures;
    }
    return result == 0;
}
#define CALL(name, ...) succeeded(#name, EXPORT(name)(__VA_ARGS__))

/// A command with its answer, which goes back for release.
void order(const Library& library) {
    std::array<char, 12> name{"PollingRate"};
    std::array<char, 3> value{"30"};
    Prop property{name.data(), nullptr, nullptr, value.data()};
    const PropList input{&property, 1};
    PropList* answer = nullptr;
    CALL(ZPXRSMDSExectue, nullptr, nullptr, "ScheduleRSM", &input, &answer);
    if (answer == nullptr) {
        return;
    }
    for (int i = 0; i < answer->count; ++i) {
        std::printf("ScheduleRSM: %s %s\n", answer->properties[i].name, answer->properties[i].value);
    }
    CALL(ZPXRSMDSDestroyPropList, nullptr, nullptr, answer);
}

/// A web service call: the request is read into the message, the response written from it.
void disconnect(const Library& library, void* webService) {
    ZPService* service = nullptr;
    if (!CALL(ZPXRSMWSCreateService, webService, &service) || service == nullptr) {
        return;
    }
    {
        KRX::Messaging::WebServiceMessage call;
        if (succeeded("CreateMessage", service->CreateMessage("disconnect", &call))) {
            agent::readMessage("<disconnect><memberName>operator-7</memberName></disconnect>",
                               *call.GetRequestMsg());
            succeeded("Execute", service->Execute(&call));
            std::printf("%s\n", agent::writeMessage(*call.GetResponseMsg()).c_str());
            succeeded("Cleanup", service->Cleanup(&call));
        }
    }
    CALL(ZPXRSMWSDestroyService, webService, service);
}

void useAll(const Library& library, Log& log, ZPServiceAgent* agent, const char* configuration,
            const char* scheduleFile) {
    void* dataSource = nullptr;
    void* rsm = nullptr;
    void* webService = nullptr;
    // The data source comes before RSM, which picks up a stored schedule.
    CALL(ZPXRSMDSStartup, &dataSource, scheduleFile);
    if (CALL(ZPXRSMLoggerStatup, configuration)) {
        log.taken = true;
        KRXLogSetFunc(&EXPORT(ZPXRSMLoggerLog));
        KRXLogSetAuditFunc(&EXPORT(ZPXRSMLoggerAudit));
    }
    const bool hasRSM = CALL(ZPRSMExtnStartup, &rsm, agent, configuration);
    const bool hasWebService = CALL(ZPXRSMWSStartup, &webService, agent);

    if (failures == 0) {
        order(library);
        disconnect(library, webService);
        CALL(ZPXRSMLoggerLog, level::kInfo, "A log message\n");
        CALL(ZPXRSMLoggerAudit, "An audit message\n");
    }

    if (hasWebService) {
        CALL(ZPXRSMWSShutdown, webService);
    }
    if (hasRSM) {
        CALL(ZPRSMExtnShutdown, rsm);
    }
    CALL(ZPXRSMDSShutdown);
    CALL(ZPXRSMLoggerShutdown);  // clears the two hooks
    log.taken = false;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fprintf(stderr, "usage: %s LIBRARY CONFIGURATION SCHEDULE-FILE\n", argv[0]);
        return 2;
    }
    try {
        Log log;
        agent::AgentHost host({&log, nullptr, nullptr});
        const Library library(argv[1]);
        useAll(library, log, host.serviceAgent(), argv[2], argv[3]);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return failures == 0 ? 0 : 1;
}
