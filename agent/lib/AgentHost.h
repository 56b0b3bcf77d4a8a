// What a host program needs to be an agent: it creates one `AgentHost`, hands its service agent to the
// module's start-up exports, and sees through the plugs what the module does in the agent's libraries.
// Without plugs all goes on quietly.
#pragma once

#include "lib/Enterprise.h"
#include "lib/Settings.h"
#include "platform/agent/Api.h"

#include <chrono>
#include <cstdint>
#include <memory>

namespace KRX::ServiceAgentNS {
class ServiceAgent;
}

namespace agent {

class Observer;
class Runtime;

/// The agent around its libraries. The libraries are the process's, so there is one host at a time (a second
/// one throws std::logic_error). No call may be inside the libraries while a host is created or destroyed,
/// but for those of module threads that were left to run: the destructor ends them.
class KRX_API AgentHost final {
  public:
    /// The parts plugged in are not owned and must outlive the host. Without an enterprise every record is
    /// accepted; without a runtime threads run freely.
    struct Plugs {
        Observer* observer = nullptr;
        Enterprise* enterprise = nullptr;
        Runtime* runtime = nullptr;
    };

    explicit AgentHost(Plugs plugs);
    AgentHost() : AgentHost(Plugs{}) {}
    AgentHost(const AgentHost&) = delete;
    AgentHost& operator=(const AgentHost&) = delete;
    ~AgentHost();

    /// The service agent for the start-up exports; valid as long as the host.
    KRX::ServiceAgentNS::ServiceAgent* serviceAgent();

    /// Whether the service agent has an asset 0 (at first it has). Asset pointers handed out stay valid.
    void setAssetPresent(bool present);
    /// The asset's current poll interval in seconds (60 at first).
    void setPollInterval(unsigned int seconds);
    /// Whether log lines go to the log hook while it is set (at first they do).
    void setRouting(bool on);
    /// How long a poll takes (nothing at first).
    void setPollDelay(std::chrono::milliseconds delay);
    /// How long the enterprise takes to answer a record (nothing at first).
    void setEnterpriseDelay(std::chrono::milliseconds delay);
    /// Whether a record is sent on a link thread, which hands the agent's log one line and one audit message
    /// before it answers, while the caller waits (at first it is sent on the caller's).
    void setLinkThread(bool on);
    /// Whether `KRXLog` holds a re-entrant lock while it formats and calls the hook (at first not).
    void setLogLock(bool on);
    /// What `KRXThreadDestroy` does to a thread that still runs (`sleep` at first). Throws std::runtime_error
    /// where the system cannot do that.
    void setThreadDestroy(ThreadDestroy how);
    /// Ends all threads of the libraries that still run, those left by `KRXThreadDestroy` among them, in
    /// their calls of the agent; a host does so before it unloads the module. False when one does not come
    /// out of the module within some seconds.
    bool endThreads();
    /// Hands an audit message to the audit hook: its answer, or -1 when none is set.
    std::int8_t audit(const char* message);

  private:
    struct Implementation;
    std::unique_ptr<Implementation> implementation_;
};

}  // namespace agent
