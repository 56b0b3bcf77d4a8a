// Exports of a module, with just enough behind them to be seen in a trace.
#include "ZephanRSMLogger.h"
#include "platform/agent/Logging.h"
#include "platform/agent/Messaging.h"
#include "platform/agent/Registration.h"
#include "platform/agent/ServiceAgent.h"
#include "platform/agent/Threads.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <mutex>
#include <optional>
#include <string>

#include <fcntl.h>
#include <unistd.h>

namespace {

int starts = 0;  // shows whether the module was loaded afresh
ZPServiceAgent* agent = nullptr;
std::mutex lock;         // of the module
bool reports = false;    // whether the worker sends a record after each poll
int* session = nullptr;  // held when the module is dropped, like the objects of one that was started
KRXThread worker;

/// Sends the agent's record.
std::int8_t report() {
    KRX::Services::RegistrationNS::RegistrationProxy proxy("Registration", "/", "urn");
    KRX::Messaging::Headers::SecurityContext context("SecurityContext");
    proxy.SetSecurityContext(context);
    proxy.SetOCM(agent->GetAsset(0)->GetOCM());
    KRX::Services::RegistrationNS::Asset record("Asset");
    record.CopyFrom(agent->GetAsset(0)->GetAssetProfile());
    return proxy.UpdateAsset(record, 0);
}

struct Frame {
    ~Frame() { KRXLog(30, "unwound"); }
};

/// Polls for as many seconds as `argument` counts.
int work(void* argument) {
    for (long left = reinterpret_cast<long>(argument); left > 0; --left) {
        KRXThreadSleep(1000);
        std::printf("tick");
        if (auto* asset = agent == nullptr ? nullptr : agent->GetAsset(0)) {
            asset->ForcePoll();
        }
        if (reports) {
            const Frame frame;
            const std::lock_guard held(lock);
            report();
        }
    }
    return 7;
}

class Echo final : public KRX::Messaging::Serializable {
  public:
    explicit Echo(const char* name) : Serializable(name, nullptr, 0, 1) {
        RegisterSubElement("text", 1, 1, nullptr);
    }
    std::int8_t SetSubElementText(const char* /*name*/, const char* text) override {
        text_ = text == nullptr ? std::nullopt : std::optional<std::string>(text);
        return 0;
    }
    const char* GetSubElementText(const char* /*name*/, bool& release, unsigned int /*index*/) override {
        release = false;
        return text_ ? text_->c_str() : nullptr;
    }

  private:
    std::optional<std::string> text_;
};

class EchoService final : public KRX::Services::Service {
  public:
    EchoService() : Service("Echo", nullptr) {}
    std::int8_t CreateMessage(const char* operation, KRX::Messaging::WebServiceMessage* message) override {
        if (std::strcmp(operation, "echo") != 0) {
            return -1;
        }
        message->SetRequestMsg(new Echo("echo"));
        message->SetResponseMsg(new Echo("echoResponse"));
        return 0;
    }
    std::int8_t Execute(KRX::Messaging::WebServiceMessage* message) override {
        bool release = false;
        const char* text = message->GetRequestMsg()->GetSubElementText("text", release, 0);
        message->GetResponseMsg()->SetSubElementText("text", text);
        return text == nullptr ? -1 : 5;
    }
};

char* copyOf(const char* text) {
    return std::strcpy(new char[std::strlen(text) + 1], text);
}

}  // namespace

namespace KRX::Services {
Service::Service(const char* /*name*/, const char* /*space*/)
    : serviceName_(nullptr), serviceNamespace_(nullptr) {}
Service::~Service() = default;
std::int8_t Service::Cleanup(Messaging::WebServiceMessage* /*message*/) {
    KRXLog(30, "cleaned up");
    return 0;
}
}  // namespace KRX::Services

std::int8_t ZPRSMExtnStartup(void** handle, ZPServiceAgent* serviceAgent, const char* initParam) {
    agent = serviceAgent;
    session = session == nullptr ? new int(0) : session;
    *handle = session;
    KRXLog(40, "start %d at %ld with %s", ++starts, static_cast<long>(std::time(nullptr)),
           initParam == nullptr ? "null" : initParam);
    return 0;
}
std::int8_t ZPRSMExtnShutdown(void* handle) {
    return handle == nullptr ? -1 : 0;
}
std::int8_t ZPXRSMDSStartup(void** /*handle*/, const char* path) {
    if (std::strcmp(path, "left-open") == 0) {
        return ::open(path, O_WRONLY | O_CREAT, 0666) < 0 ? -1 : 0;
    }
    const int file = ::open(path, O_WRONLY | O_CREAT | O_TRUNC, 0666);
    const ssize_t written = ::write(file, "stored", 6);
    ::close(file);
    return written == 6 ? 0 : -1;
}
std::int8_t ZPXRSMDSShutdown() {
    return 0;
}
std::int32_t ZPXRSMDSGet() {
    return 2;
}
std::int32_t ZPXRSMDSSet() {
    return 2;
}
std::int32_t ZPXRSMDSExectue(void*, void*, const char* command, const PropList* input, PropList** response) {
    const std::string name = command == nullptr ? "" : command;
    if (name == "report") {
        return report();
    }
    if (name == "reports") {
        reports = true;
    } else if (name == "lock") {
        const std::lock_guard held(lock);
    } else if (name == "spin") {
        while (reports) {
            KRXThreadSleep(0);
        }
    } else if (name == "log") {
        KRXLog(30, "report");
    }
    if (input == nullptr) {
        return 1;
    }
    *response = new PropList{new Prop[1]{{copyOf("count"), nullptr, nullptr, nullptr}}, 1};
    return input->count;
}
std::int8_t ZPXRSMDSDestoryResponse() {
    return -1;
}
std::int8_t ZPXRSMDSDestroyPropList(void*, void*, PropList* list) {
    delete[] list->properties[0].name;
    delete[] list->properties;
    delete list;
    return 0;
}
std::int8_t ZPXRSMLoggerStatup(const char* initParam) {
    if (KRXThreadConstruct(&worker) != 0) {
        return -1;
    }
    const long seconds = std::atol(initParam);
    if (KRXThreadStart(&worker, "Worker", 0, 0, 4096, work, reinterpret_cast<void*>(seconds)) != 0) {
        KRXThreadDestroy(&worker);
        return -1;
    }
    return 0;
}
std::int8_t ZPXRSMLoggerShutdown() {
    const int ended = KRXWaitForThread(&worker, nullptr, 3000);
    KRXThreadDestroy(&worker);
    KRXLogSetFunc(nullptr);
    return static_cast<std::int8_t>(ended);
}
std::int8_t ZPXRSMLoggerLog(std::uint8_t level, const char* message) {
    if (message != nullptr && std::strcmp(message, "report") == 0) {
        return report();
    }
    std::printf("<%d %s>", int{level}, message == nullptr ? "null" : message);
    return 0;
}
std::int8_t ZPXRSMLoggerAudit(const char* message) {
    const bool isCommand = std::strncmp(message, "Registration", 12) != 0;
    return isCommand ? static_cast<std::int8_t>(std::system(message)) : 0;
}
std::int8_t ZPXRSMWSStartup(void** handle, ZPServiceAgent* /*serviceAgent*/) {
    *handle = &worker;
    return 0;
}
std::int8_t ZPXRSMWSShutdown(void* handle) {
    return handle == nullptr ? -1 : 0;
}
std::int8_t ZPXRSMWSCreateService(void* handle, ZPService** service) {
    *service = handle == nullptr ? nullptr : new EchoService;
    return handle == nullptr ? -1 : 0;
}
std::int8_t ZPXRSMWSDestroyService(void* /*handle*/, ZPService* service) {
    delete service;
    return service == nullptr ? 1 : 0;
}
