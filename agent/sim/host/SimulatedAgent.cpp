#include "sim/host/SimulatedAgent.h"

#include "lib/Place.h"
#include "platform/agent/Logging.h"
#include "platform/agent/ServiceAgent.h"
#include "sim/host/FileVerbs.h"
#include "sim/host/Module.h"
#include "sim/host/ServiceCall.h"
#include "sim/time/Clock.h"
#include "sim/time/Scheduler.h"

#include <limits>
#include <optional>
#include <utility>

namespace sim {

namespace {

using std::chrono::microseconds;

constexpr std::int64_t kSecondsPerDay = std::int64_t{24} * 60 * 60;

std::vector<Assignment> assignmentsFrom(const Action& action, std::size_t first) {
    std::vector<Assignment> assignments;
    for (std::size_t i = first; i < action.arguments.size(); ++i) {
        assignments.push_back(asAssignment(action.arguments[i]).value());
    }
    return assignments;
}

std::optional<std::string> valueOf(const char* text) {
    return text == nullptr ? std::nullopt : std::optional<std::string>(text);
}

bool isOn(const Action& action) {
    return action.word(0) == "on";
}

microseconds duration(const Action& action, std::size_t index) {
    return microseconds(parseDecimal(action.word(index)).value());
}

agent::ThreadDestroy threadDestroy(const std::string& name) {
    return name == "sleep"      ? agent::ThreadDestroy::sleep
           : name == "anywhere" ? agent::ThreadDestroy::anywhere
           : name == "unwind"   ? agent::ThreadDestroy::unwind
                                : agent::ThreadDestroy::leave;
}

}  // namespace

const std::vector<Verb>& SimulatedAgent::verbs() {
    using Agent = SimulatedAgent;
    static const std::vector<Verb> all = {
        {"start data-source", "PATH", "starts the data source on its schedule file",
         [](Agent& self, const Action& action) {
             self.record(action,
                         self.module().ZPXRSMDSStartup(&(self.dataSource_ = nullptr), action.argument(0)));
         }},
        {"start logger", "PARAM", "starts the logger on its configuration file",
         [](Agent& self, const Action& action) {
             self.record(action, self.startLogger(action.argument(0)));
         }},
        {"start rsm", "PARAM", "starts RSM on its configuration file",
         [](Agent& self, const Action& action) {
             self.record(action, self.module().ZPRSMExtnStartup(
                                     &(self.rsm_ = nullptr), self.host_.serviceAgent(), action.argument(0)));
         }},
        {"start web-service", "", "starts the web service",
         [](Agent& self, const Action& action) {
             self.record(action, self.module().ZPXRSMWSStartup(&(self.webService_ = nullptr),
                                                               self.host_.serviceAgent()));
         }},
        {"stop data-source", "", "stops the data source",
         [](Agent& self, const Action& action) { self.record(action, self.module().ZPXRSMDSShutdown()); }},
        {"stop logger", "", "stops the logger",
         [](Agent& self, const Action& action) {
             self.record(action, self.module().ZPXRSMLoggerShutdown());
         }},
        {"stop rsm", "[null]", "stops RSM (null: with a null handle)",
         [](Agent& self, const Action& action) {
             self.record(action,
                         self.module().ZPRSMExtnShutdown(action.arguments.empty() ? self.rsm_ : nullptr));
         }},
        {"stop web-service", "[null]", "stops the web service (null: with a null handle)",
         [](Agent& self, const Action& action) {
             self.record(action, self.module().ZPXRSMWSShutdown(action.arguments.empty() ? self.webService_
                                                                                         : nullptr));
         }},
        {"service create", "", "makes a web service object",
         [](Agent& self, const Action& action) {
             ZPService* service = nullptr;
             self.record(action, self.createService(service));
         }},
        {"service destroy", "", "gives the latest web service object back",
         [](Agent& self, const Action& action) { self.record(action, self.destroyService()); }},
        {"connect", "MINUTES RATE", "a web service call: poll for so many minutes, every RATE seconds",
         [](Agent& self, const Action& action) {
             self.record(action,
                         self.callOperation("connect", {{"pollDuration", valueOf(action.argument(0))},
                                                        {"pollingRate", valueOf(action.argument(1))}}));
         }},
        {"disconnect", "[MEMBER]", "a web service call: polling ends",
         [](Agent& self, const Action& action) {
             self.record(action,
                         self.callOperation("disconnect", {{"memberName", valueOf(action.argument(0))}}));
         }},
        {"call", "OPERATION [NAME=VALUE...]", "any web service call",
         [](Agent& self, const Action& action) {
             self.record(action, self.callOperation(action.word(0), assignmentsFrom(action, 1)));
         }},
        {"command", "NAME [NAME=VALUE...|null]", "a command for the data source",
         [](Agent& self, const Action& action) { self.runCommand(action); }},
        {"log", "LEVEL TEXT", "a log message (trace, info, warn, error, force, audit or a number)",
         [](Agent& self, const Action& action) {
             self.record(action, self.module().ZPXRSMLoggerLog(parseLevel(action.word(0)).value(),
                                                               action.argument(1)));
         }},
        {"audit", "TEXT", "an audit message",
         [](Agent& self, const Action& action) {
             self.recorder_.tellOnly("audit", {{"text", valueOf(action.argument(0))}});
             self.record(action, self.module().ZPXRSMLoggerAudit(action.argument(0)));
         }},
        {"asset", "present|absent", "whether the agent has an asset 0",
         [](Agent& self, const Action& action) { self.host_.setAssetPresent(action.word(0) == "present"); }},
        {"enterprise", "accept|refuse", "how the enterprise answers a profile",
         [](Agent& self, const Action& action) { self.enterpriseRefuses_ = action.word(0) == "refuse"; }},
        {"enterprise delay", "SECONDS", "how long it takes to answer",
         [](Agent& self, const Action& action) {
             self.host_.setEnterpriseDelay(
                 std::chrono::duration_cast<std::chrono::milliseconds>(duration(action, 0)));
         }},
        {"enterprise thread", "on|off", "whether profiles are sent on a thread of their own",
         [](Agent& self, const Action& action) { self.host_.setLinkThread(isOn(action)); }},
        {"log-lock", "on|off", "whether the agent logs one line at a time",
         [](Agent& self, const Action& action) { self.host_.setLogLock(isOn(action)); }},
        {"thread-destroy", "sleep|anywhere|unwind|leave", "what happens to a thread that is destroyed",
         [](Agent& self, const Action& action) {
             self.host_.setThreadDestroy(threadDestroy(action.word(0)));
         }},
        {"poll-interval", "COUNT", "the asset's own poll interval in seconds",
         [](Agent& self, const Action& action) {
             self.host_.setPollInterval(
                 parseCount(action.word(0), std::numeric_limits<unsigned int>::max()).value());
         }},
        {"fail thread-construct", "", "the next thread object cannot be made",
         [](Agent& self, const Action& /*action*/) { self.scheduler_.failNextConstruct(); }},
        {"fail thread-start", "", "no thread can be started next time",
         [](Agent& self, const Action& /*action*/) { self.scheduler_.failNextStart(); }},
        {"route", "on|off", "whether the module's log lines come back to its logger",
         [](Agent& self, const Action& action) { self.host_.setRouting(isOn(action)); }},
        {"write", "FILE CONTENTS", "writes a file",
         [](Agent& self, const Action& action) {
             writeFile(action.word(0), action.word(1), self.clock_.wall());
         }},
        {"remove", "FILE", "removes a file or a directory",
         [](Agent& /*self*/, const Action& action) { removeFile(action.word(0)); }},
        {"age", "FILE DAYS", "makes a file that many days old",
         [](Agent& self, const Action& action) {
             setModified(action.word(0), self.clock_.wall() - duration(action, 1) * kSecondsPerDay);
         }},
        {"show", "FILE", "shows a file's contents",
         [](Agent& self, const Action& action) {
             self.recorder_.recordFile(action.word(0), readFile(action.word(0)));
         }},
        {"status", "", "what RSM does now",
         [](Agent& self, const Action& /*action*/) { self.tellStatus_(); }},
        {"clock-step", "OFFSET", "makes the wall clock jump by that many seconds",
         [](Agent& self, const Action& action) {
             self.clock_.step(duration(action, 0));
             self.recorder_.tellOnly("clock-step");
         }},
        {"unload", "", "drops the module as a killed agent would",
         [](Agent& self, const Action& /*action*/) { self.unload(); }},
        {"end", "", "ends the session", nullptr},
    };
    return all;
}

const std::vector<Verb>& verbs() {
    return SimulatedAgent::verbs();
}

SimulatedAgent::SimulatedAgent(std::string modulePath, Clock& clock, Scheduler& scheduler, Recorder& recorder)
    : modulePath_(std::move(modulePath)),
      clock_(clock),
      scheduler_(scheduler),
      recorder_(recorder),
      host_({&recorder, this, &scheduler}) {}

SimulatedAgent::~SimulatedAgent() {
    scheduler_.stopAll();
    dropHooksAndServices();
}

void SimulatedAgent::perform(const Action& action) {
    const agent::Place verb(action.text.c_str(), agent::Place::Side::module);
    action.verb->perform(*this, action);
}

std::int8_t SimulatedAgent::receive(const std::string& /*member*/, const agent::NamedValues& /*properties*/) {
    return enterpriseRefuses_ ? -1 : 0;
}

Module& SimulatedAgent::module() {
    if (module_ == nullptr) {
        module_ = std::make_unique<Module>(modulePath_);
    }
    return *module_;
}

std::int8_t SimulatedAgent::startLogger(const char* configuration) {
    const std::int8_t result = module().ZPXRSMLoggerStatup(configuration);
    if (result == 0) {
        KRXLogSetFunc(module().ZPXRSMLoggerLog);
        KRXLogSetAuditFunc(module().ZPXRSMLoggerAudit);
    }
    return result;
}

std::int8_t SimulatedAgent::createService(ZPService*& service) {
    service = nullptr;
    const std::int8_t result = module().ZPXRSMWSCreateService(webService_, &service);
    if (service != nullptr) {
        services_.push_back(service);
    }
    return result;
}

std::int8_t SimulatedAgent::destroyService() {
    ZPService* latest = services_.empty() ? nullptr : services_.back();
    const std::int8_t result = module().ZPXRSMWSDestroyService(webService_, latest);
    if (latest != nullptr) {
        services_.pop_back();
    }
    return result;
}

ServiceAnswer SimulatedAgent::callOperation(const std::string& operation,
                                            const std::vector<Assignment>& subElements) {
    ZPService* service = services_.empty() ? nullptr : services_.back();
    if (service == nullptr && (createService(service) != 0 || service == nullptr)) {
        return {-1, "service", std::nullopt, "there is no service"};
    }
    return callService(*service, operation, subElements);
}

void SimulatedAgent::runCommand(const Action& action) {
    const bool withoutList = action.arguments.size() == 2 && action.arguments[1].isNull();
    std::vector<Assignment> assignments;
    std::vector<Prop> records;
    if (!withoutList) {
        assignments = assignmentsFrom(action, 1);
        records.reserve(assignments.size());
    }
    for (auto& [name, value] : assignments) {
        records.push_back({name.data(), nullptr, nullptr, value ? value->data() : nullptr});
    }
    const PropList list = {records.data(), static_cast<std::int32_t>(records.size())};
    PropList* response = nullptr;
    const std::int32_t result = module().ZPXRSMDSExectue(nullptr, nullptr, action.argument(0),
                                                         withoutList ? nullptr : &list, &response);
    std::optional<agent::NamedValues> answer;
    if (response != nullptr) {
        answer.emplace();
        for (std::int32_t i = 0; i < response->count; ++i) {
            const Prop& property = response->properties[i];
            answer->emplace_back(valueOf(property.name).value_or(""), valueOf(property.value));
        }
        module().ZPXRSMDSDestroyPropList(nullptr, nullptr, response);
    }
    recorder_.recordCall(
        {{"verb", std::optional(action.text)}, {"result", std::int64_t{result}}, {"answer", answer}}, {});
}

void SimulatedAgent::record(const Action& action, std::int8_t result) {
    startFailed_ = startFailed_ || (result != 0 && action.verb->words.starts_with("start "));
    recorder_.recordCall({{"verb", std::optional(action.text)}, {"result", std::int64_t{result}}}, {});
}

void SimulatedAgent::record(const Action& action, const ServiceAnswer& answer) {
    recorder_.recordCall({{"verb", std::optional(action.text)},
                          {"result", std::int64_t{answer.result}},
                          {"stage", std::optional<std::string>(answer.stage)},
                          {"response", answer.response}},
                         answer.remark);
}

void SimulatedAgent::dropHooksAndServices() {
    KRXLogSetFunc(nullptr);
    KRXLogSetAuditFunc(nullptr);
    for (ZPService* service : std::exchange(services_, {})) {
        delete service;  // The export would be a call of the module like any other.
    }
}

void SimulatedAgent::unload() {
    for (const std::string& name : scheduler_.stopAll()) {
        recorder_.onThreadDestroyed(name);
    }
    dropHooksAndServices();
    dataSource_ = rsm_ = webService_ = nullptr;
    if (const std::unique_ptr<Module> dropped = std::exchange(module_, nullptr)) {
        dropped->drop();
    }
    scheduler_.releaseAll();
    recorder_.tellOnly("unload");
}

}  // namespace sim
