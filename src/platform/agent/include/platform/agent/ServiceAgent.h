// The agent's service agent library, as the module uses it.
#pragma once

#include "platform/agent/Api.h"

namespace KRX::Messaging {
class OCM;
}
namespace KRX::Services::RegistrationNS {
class Asset;
}

namespace KRX::ServiceAgentNS {

/// A managed asset of the agent. Owned by the service agent.
class KRX_API VirtualAsset {
  public:
    VirtualAsset(const VirtualAsset&) = delete;
    VirtualAsset& operator=(const VirtualAsset&) = delete;

    /// Makes the agent poll the enterprise once, now. Any thread.
    void ForcePoll();
    /// The asset's registration record; the agent's own, never to be changed by the module.
    const Services::RegistrationNS::Asset& GetAssetProfile() const;
    /// The asset's messaging channel, owned by the agent.
    Messaging::OCM* GetOCM();

  protected:
    VirtualAsset() = default;
    ~VirtualAsset() = default;
};

/// The agent itself, handed to the start-up exports. Owned by the host.
class KRX_API ServiceAgent {
  public:
    ServiceAgent(const ServiceAgent&) = delete;
    ServiceAgent& operator=(const ServiceAgent&) = delete;

    /// The asset at `index`, or null. Any thread.
    VirtualAsset* GetAsset(int index);

  protected:
    ServiceAgent() = default;
    ~ServiceAgent() = default;
};

}  // namespace KRX::ServiceAgentNS
