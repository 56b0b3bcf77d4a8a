#pragma once

#include "platform/agent/Registration.h"
#include "platform/portable/Published.h"

#include <atomic>
#include <cstdint>
#include <memory>

struct RsmState;
namespace KRX::ServiceAgentNS {
class ServiceAgent;
class VirtualAsset;
}  // namespace KRX::ServiceAgentNS

/// The way to the enterprise: sends the RSM profile, eight properties of the agent's asset 0, and writes it
/// to the log. Any thread, several at once.
class ProfileReport final {
  public:
    ProfileReport() = default;
    ProfileReport(const ProfileReport&) = delete;
    ProfileReport& operator=(const ProfileReport&) = delete;

    /// Keeps the host's service agent (not owned) if none is held yet, and gives its asset's channel and
    /// credentials to the proxy. A null agent changes nothing.
    void setServiceAgent(KRX::ServiceAgentNS::ServiceAgent* serviceAgent);
    KRX::ServiceAgentNS::ServiceAgent* getServiceAgent() const noexcept { return serviceAgent_; }

    /// Asset 0, or null.
    KRX::ServiceAgentNS::VirtualAsset* findAsset() const;
    /// Sees to a proxy with the asset's channel and credentials: the asset may have appeared after the start.
    /// Without memory for it nothing is done, and the next call tries again.
    void introduce(KRX::ServiceAgentNS::VirtualAsset& asset) { clientOf(asset); }

    /// Sends the profile of `state`, and logs it, or that the enterprise did not take it. Blocks until
    /// the enterprise answers. Anything the agent throws is dropped.
    void send(const RsmState& state);

    /// Profile date text, "2007-30-09 GMT 05:06:00"; room for 40 characters.
    static void dateToString(std::int64_t gmtClockValue, char* text);

  private:
    /// A proxy and whose channel and credentials it has. Not changed any more once others may use it.
    struct Client {
        explicit Client(KRX::ServiceAgentNS::VirtualAsset& ofAsset);
        KRX::ServiceAgentNS::VirtualAsset* asset;
        KRX::Services::RegistrationNS::RegistrationProxy proxy;
    };

    /// Null without memory for it.
    std::shared_ptr<Client> clientOf(KRX::ServiceAgentNS::VirtualAsset& asset);
    /// False when the enterprise does not take it; without a list to put it in, that is said instead.
    static bool update(Client& client, const RsmState& state);
    static void LogRSMProfile(const RsmState& state);

    std::atomic<KRX::ServiceAgentNS::ServiceAgent*> serviceAgent_{nullptr};
    platform::Published<Client> client_;
};
