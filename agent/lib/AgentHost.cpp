#include "AgentHost.h"

#include "OCM.h"
#include "Observer.h"
#include "Plugs.h"
#include "Runtime.h"
#include "Thread.h"
#include "platform/agent/Registration.h"
#include "platform/agent/ServiceAgent.h"

#include <atomic>
#include <stdexcept>

namespace KRX::ServiceAgentNS {

struct VirtualAsset::Implementation {
    explicit Implementation(agent::Enterprise* enterprise) : channel(enterprise) {}

    Services::RegistrationNS::Asset profile{"Asset"};
    Messaging::OCM channel;
};

struct ServiceAgent::Implementation {
    explicit Implementation(agent::Enterprise* enterprise) : assetParts(enterprise) {}

    VirtualAsset::Implementation assetParts;
    VirtualAsset asset{&assetParts};
    std::atomic<bool> assetPresent = true;
};

void VirtualAsset::ForcePoll() {
    const agent::AgentCall call("ForcePoll");
    agent::observer().onForcePoll();
    const std::chrono::milliseconds delay = agent::settings().pollDelay;
    if (delay.count() > 0) {
        agent::Thread::block(delay, [] { return false; });
    }
}

const Services::RegistrationNS::Asset& VirtualAsset::GetAssetProfile() const {
    return implementation_->profile;
}

Messaging::OCM* VirtualAsset::GetOCM() {
    return &implementation_->channel;
}

VirtualAsset* ServiceAgent::GetAsset(int index) {
    return index == 0 && implementation_->assetPresent ? &implementation_->asset : nullptr;
}

}  // namespace KRX::ServiceAgentNS

namespace agent {

namespace {

std::atomic<bool> hostExists = false;

constexpr unsigned int kFirstPollInterval = 60;  // seconds

/// Properties that the device registered itself with.
constexpr std::pair<const char*, const char*> kDeviceProperties[] = {{"MODEL", "KRX-7"}, {"SERIAL", "0042"}};

void fillProfile(KRX::Services::RegistrationNS::Asset& profile) {
    using KRX::Services::RegistrationNS::Property;
    profile.SetMemberName("device-0042");
    profile.SetMemberPassword("stand-in secret");
    profile.SetCurrentPollInterval(kFirstPollInterval);
    for (const auto& [name, value] : kDeviceProperties) {
        auto property = std::make_unique<Property>("update", name, value, "Property");
        if (profile.GetProperties()->AddEntry(property.get()) == 0) {
            static_cast<void>(property.release());  // The record releases it.
        }
    }
}

}  // namespace

struct AgentHost::Implementation {
    explicit Implementation(Enterprise* enterprise) : agentParts(enterprise) {
        fillProfile(agentParts.assetParts.profile);
    }

    KRX::ServiceAgentNS::ServiceAgent::Implementation agentParts;
    KRX::ServiceAgentNS::ServiceAgent serviceAgent{&agentParts};
};

AgentHost::AgentHost(Plugs plugs) : implementation_(std::make_unique<Implementation>(plugs.enterprise)) {
    if (hostExists.exchange(true)) {
        throw std::logic_error("AgentHost: there is one already");
    }
    plugIn(plugs.observer, plugs.runtime);
    settings().reset();
}

AgentHost::~AgentHost() {
    if (!endThreads()) {
        static_cast<void>(implementation_.release());  // A thread that cannot be ended may come back to it.
    }
    plugIn(nullptr, nullptr);
    hostExists = false;
}

KRX::ServiceAgentNS::ServiceAgent* AgentHost::serviceAgent() {
    return &implementation_->serviceAgent;
}

void AgentHost::setAssetPresent(bool present) {
    implementation_->agentParts.assetPresent = present;
}

void AgentHost::setPollInterval(unsigned int seconds) {
    implementation_->agentParts.assetParts.profile.SetCurrentPollInterval(seconds);
}

void AgentHost::setRouting(bool on) {
    settings().routing = on;
}

void AgentHost::setPollDelay(std::chrono::milliseconds delay) {
    settings().pollDelay = delay;
}

void AgentHost::setEnterpriseDelay(std::chrono::milliseconds delay) {
    settings().enterpriseDelay = delay;
}

void AgentHost::setLinkThread(bool on) {
    settings().linkThread = on;
}

void AgentHost::setLogLock(bool on) {
    settings().logLock = on;
}

void AgentHost::setThreadDestroy(ThreadDestroy how) {
    settings().threadDestroy = how;
}

bool AgentHost::endThreads() {
    return runtime().endAll();
}

std::int8_t AgentHost::audit(const char* message) {
    return callAuditHook(message);
}

}  // namespace agent
