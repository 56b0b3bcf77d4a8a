// The agent that a simulation plays.
#pragma once

#include "ZephanRSMLogger.h"
#include "lib/AgentHost.h"
#include "lib/Enterprise.h"
#include "sim/scenario/Verbs.h"
#include "sim/trace/Recorder.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace sim {

class Clock;
class Module;
class Scheduler;
struct ServiceAnswer;

/// Owns the module and what it got from it, and performs actions. Used by the host thread.
class SimulatedAgent final : private agent::Enterprise {
  public:
    SimulatedAgent(std::string modulePath, Clock& clock, Scheduler& scheduler, Recorder& recorder);
    SimulatedAgent(const SimulatedAgent&) = delete;
    SimulatedAgent& operator=(const SimulatedAgent&) = delete;
    /// Ends the module's threads and leaves it without a shut-down.
    ~SimulatedAgent() override;

    static const std::vector<Verb>& verbs();

    /// Does everything but `end`. Throws std::runtime_error when the action or the module cannot be used.
    void perform(const Action& action);
    /// What the verb `status` does.
    void onStatus(std::function<void()> tell) { tellStatus_ = std::move(tell); }
    /// Whether a start of a family failed.
    bool startFailed() const { return startFailed_; }

  private:
    std::int8_t receive(const std::string& member, const agent::NamedValues& properties) override;

    Module& module();
    std::int8_t startLogger(const char* configuration);
    std::int8_t createService(ZPService*& service);
    std::int8_t destroyService();
    ServiceAnswer callOperation(const std::string& operation, const std::vector<Assignment>& subElements);
    void runCommand(const Action& action);
    void record(const Action& action, std::int8_t result);
    void record(const Action& action, const ServiceAnswer& answer);
    void dropHooksAndServices();
    void unload();

    std::string modulePath_;
    Clock& clock_;
    Scheduler& scheduler_;
    Recorder& recorder_;
    agent::AgentHost host_;
    std::unique_ptr<Module> module_;
    std::function<void()> tellStatus_ = [] {};
    bool enterpriseRefuses_ = false;
    bool startFailed_ = false;
    void* dataSource_ = nullptr;
    void* rsm_ = nullptr;
    void* webService_ = nullptr;
    std::vector<ZPService*> services_;
};

}  // namespace sim
