#include "SimulatedAgent.h"

#include "Clock.h"
#include "CommandCall.h"
#include "FileVerbs.h"
#include "Module.h"
#include "Place.h"
#include "Scheduler.h"
#include "ServiceCall.h"
#include "platform/agent/Logging.h"
#include "platform/agent/ServiceAgent.h"

#include <limits>
#include <stdexcept>
#include <utility>

namespace sim {

namespace {

constexpr std::int64_t kSecondsPerDay = std::int64_t{24} * 60 * 60;

std::vector<Assignment> assignmentsFrom(std::vector<Word>::const_iterator first,
                                        std::vector<Word>::const_iterator last) {
    std::vector<Assignment> assignments;
    for (; first != last; ++first) {
        assignments.push_back(asAssignment(*first).value());
    }
    return assignments;
}

std::optional<std::string> valueOf(const Word& word) {
    return word.isNull() ? std::nullopt : std::optional(word.text);
}

}  // namespace

SimulatedAgent::SimulatedAgent(std::filesystem::path modulePath, Clock& clock, Scheduler& scheduler,
                               Recorder& recorder)
    : modulePath_(std::move(modulePath)),
      clock_(clock),
      scheduler_(scheduler),
      recorder_(recorder),
      host_({&recorder, this, &scheduler}) {}

SimulatedAgent::~SimulatedAgent() {
    scheduler_.stopAll();
    dropHooksAndServices();
}

std::int8_t SimulatedAgent::receive(const std::string& /*member*/, const agent::NamedValues& /*properties*/) {
    return enterpriseRefuses_ ? -1 : 0;
}

void SimulatedAgent::perform(const Action& action) {
    {
        const agent::Place verb(action.text.c_str(), agent::Place::Side::module);
        if (performStartOrStop(action) || performCall(action)) {
            return;
        }
    }
    performSetting(action);
}

bool SimulatedAgent::performStartOrStop(const Action& action) {
    const char* text = action.arguments.empty() ? nullptr : action.arguments[0].argument();
    const bool noHandle = !action.arguments.empty();  // The handle that a stop can be given is null.
    std::int8_t result = 0;
    switch (action.verb) {
        case Verb::startDataSource:
            result = module().dataSourceStartup(&(dataSource_ = nullptr), text);
            break;
        case Verb::startRsm:
            result = module().rsmStartup(&(rsm_ = nullptr), host_.serviceAgent(), text);
            break;
        case Verb::startLogger:
            result = startLogger(text);
            break;
        case Verb::startWebService:
            result = module().webServiceStartup(&(webService_ = nullptr), host_.serviceAgent());
            break;
        case Verb::stopDataSource:
            result = module().dataSourceShutdown();
            break;
        case Verb::stopRsm:
            result = module().rsmShutdown(noHandle ? nullptr : rsm_);
            break;
        case Verb::stopLogger:
            result = module().loggerShutdown();
            break;
        case Verb::stopWebService:
            result = module().webServiceShutdown(noHandle ? nullptr : webService_);
            break;
        default:
            return false;
    }
    recordResult(action, result);
    return true;
}

bool SimulatedAgent::performCall(const Action& action) {
    const auto& arguments = action.arguments;
    switch (action.verb) {
        case Verb::serviceCreate: {
            ZPService* service = nullptr;
            recordResult(action, createService(service));
            break;
        }
        case Verb::serviceDestroy: {
            ZPService* latest = services_.empty() ? nullptr : services_.back();
            const std::int8_t result = module().destroyService(webService_, latest);
            if (latest != nullptr) {
                services_.pop_back();
            }
            recordResult(action, result);
            break;
        }
        case Verb::connect:
            recordAnswer(action, callOperation("connect", {{"pollDuration", valueOf(arguments[0])},
                                                           {"pollingRate", valueOf(arguments[1])}}));
            break;
        case Verb::disconnect:
            recordAnswer(
                action,
                callOperation("disconnect",
                              {{"memberName", arguments.empty() ? std::nullopt : valueOf(arguments[0])}}));
            break;
        case Verb::call:
            recordAnswer(action, callOperation(arguments[0].text,
                                               assignmentsFrom(arguments.begin() + 1, arguments.end())));
            break;
        case Verb::command:
            recordCommand(action);
            break;
        case Verb::log:
            recordResult(action,
                         module().loggerLog(parseLevel(arguments[0].text).value(), arguments[1].argument()));
            break;
        case Verb::audit:
            recordResult(action, module().loggerAudit(arguments[0].argument()));
            break;
        default:
            return false;
    }
    return true;
}

void SimulatedAgent::performSetting(const Action& action) {
    const auto& arguments = action.arguments;
    switch (action.verb) {
        case Verb::assetPresent:
        case Verb::assetAbsent:
            host_.setAssetPresent(action.verb == Verb::assetPresent);
            break;
        case Verb::enterpriseAccept:
        case Verb::enterpriseRefuse:
            enterpriseRefuses_ = action.verb == Verb::enterpriseRefuse;
            break;
        case Verb::enterpriseDelay:
            host_.setEnterpriseDelay(std::chrono::duration_cast<std::chrono::milliseconds>(
                std::chrono::microseconds(parseDecimal(arguments[0].text).value())));
            break;
        case Verb::enterpriseThread:
            host_.setLinkThread(parseOnOff(arguments[0].text).value());
            break;
        case Verb::pollInterval:
            host_.setPollInterval(
                parseCount(arguments[0].text, std::numeric_limits<unsigned int>::max()).value());
            break;
        case Verb::failThreadConstruct:
            scheduler_.failNextConstruct();
            break;
        case Verb::failThreadStart:
            scheduler_.failNextStart();
            break;
        case Verb::routeOn:
        case Verb::routeOff:
            host_.setRouting(action.verb == Verb::routeOn);
            break;
        case Verb::logLock:
            host_.setLogLock(parseOnOff(arguments[0].text).value());
            break;
        case Verb::threadDestroy:
            host_.setThreadDestroy(parseThreadDestroy(arguments[0].text).value());
            break;
        case Verb::write:
            writeFile(arguments[0].text, arguments[1].text, clock_.wall());
            break;
        case Verb::remove:
            removeFile(arguments[0].text);
            break;
        case Verb::age:
            setModified(arguments[0].text,
                        clock_.wall() - std::chrono::microseconds(parseDecimal(arguments[1].text).value() *
                                                                  kSecondsPerDay));
            break;
        case Verb::show:
            recorder_.recordFile(arguments[0].text, readFile(arguments[0].text));
            break;
        case Verb::clockStep:
            clock_.step(std::chrono::microseconds(parseDecimal(arguments[0].text).value()));
            break;
        case Verb::unload:
            unload();
            break;
        default:
            throw std::logic_error("'" + action.text + "' cannot be performed");
    }
}

Module& SimulatedAgent::module() {
    if (module_ == nullptr) {
        module_ = std::make_unique<Module>(modulePath_);
    }
    return *module_;
}

std::int8_t SimulatedAgent::startLogger(const char* configuration) {
    const std::int8_t result = module().loggerStartup(configuration);
    if (result == 0) {
        KRXLogSetFunc(module().loggerLog);
        KRXLogSetAuditFunc(module().loggerAudit);
    }
    return result;
}

std::int8_t SimulatedAgent::createService(ZPService*& service) {
    service = nullptr;
    const std::int8_t result = module().createService(webService_, &service);
    if (service != nullptr) {
        services_.push_back(service);
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

void SimulatedAgent::recordResult(const Action& action, std::int64_t result) {
    recorder_.recordCall({{"verb", std::optional(action.text)}, {"result", result}}, {});
}

void SimulatedAgent::recordAnswer(const Action& action, const ServiceAnswer& answer) {
    recorder_.recordCall({{"verb", std::optional(action.text)},
                          {"result", std::int64_t{answer.result}},
                          {"stage", std::optional<std::string>(answer.stage)},
                          {"response", answer.response}},
                         answer.remark);
}

void SimulatedAgent::recordCommand(const Action& action) {
    const auto& arguments = action.arguments;
    std::optional<std::vector<Assignment>> properties;
    if (arguments.size() != 2 || !arguments[1].isNull()) {
        properties = assignmentsFrom(arguments.begin() + 1, arguments.end());
    }
    const CommandAnswer answer = runCommand(module(), arguments[0].argument(), std::move(properties));
    recorder_.recordCall({{"verb", std::optional(action.text)},
                          {"result", std::int64_t{answer.result}},
                          {"answer", answer.properties}},
                         {});
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
        const agent::Place place("unload", agent::Place::Side::module);
        dropped->unload();
    }
    scheduler_.releaseAll();
}

}  // namespace sim
