#include "lib/AgentHost.h"

#include "lib/Insides.h"
#include "lib/OCM.h"
#include "lib/Observer.h"
#include "lib/Plugs.h"
#include "lib/Runtime.h"
#include "lib/SystemThread.h"
#include "lib/Thread.h"
#include "platform/agent/ServiceAgent.h"

#include <atomic>
#include <stdexcept>

namespace agent {

namespace {

/// The asset that the device is.
struct DeviceAsset final : KRX::ServiceAgentNS::VirtualAsset {
    explicit DeviceAsset(Enterprise* enterprise) : channel(enterprise) {}

    DeviceRecord profile;
    KRX::Messaging::OCM channel;
};

struct DeviceAgent final : KRX::ServiceAgentNS::ServiceAgent {
    explicit DeviceAgent(Enterprise* enterprise) : asset(enterprise) {}

    DeviceAsset asset;
    std::atomic<bool> assetPresent = true;
};

}  // namespace

}  // namespace agent

namespace KRX::ServiceAgentNS {

void VirtualAsset::ForcePoll() {
    const agent::AgentCall call("ForcePoll");
    agent::observer().onForcePoll();
    const std::chrono::milliseconds delay = agent::settings().pollDelay;
    if (delay.count() > 0) {
        agent::Thread::block(delay, [] { return false; });
    }
}

const Services::RegistrationNS::Asset& VirtualAsset::GetAssetProfile() const {
    return static_cast<const agent::DeviceAsset*>(this)->profile;
}

Messaging::OCM* VirtualAsset::GetOCM() {
    return &static_cast<agent::DeviceAsset*>(this)->channel;
}

VirtualAsset* ServiceAgent::GetAsset(int index) {
    auto& device = *static_cast<agent::DeviceAgent*>(this);
    return index == 0 && device.assetPresent ? &device.asset : nullptr;
}

}  // namespace KRX::ServiceAgentNS

namespace agent {

namespace {

std::atomic<bool> hostExists = false;

constexpr unsigned int kFirstPollInterval = 60;  // seconds
constexpr const char* kMemberName = "device-0042";
constexpr const char* kMemberPassword = "stand-in secret";

/// Properties that the device registered itself with.
constexpr std::pair<const char*, const char*> kDeviceProperties[] = {{"MODEL", "KRX-7"}, {"SERIAL", "0042"}};

void fillProfile(DeviceRecord& profile) {
    using KRX::Services::RegistrationNS::Property;
    profile.setMember(kMemberName, kMemberPassword);
    profile.setPollInterval(kFirstPollInterval);
    for (const auto& [name, value] : kDeviceProperties) {
        auto property = std::make_unique<Property>("update", name, value, "Property");
        if (profile.GetProperties()->AddEntry(property.get()) == 0) {
            static_cast<void>(property.release());  // The record releases it.
        }
    }
}

}  // namespace

struct AgentHost::Implementation {
    explicit Implementation(Enterprise* enterprise) : serviceAgent(enterprise) {
        fillProfile(serviceAgent.asset.profile);
    }

    DeviceAgent serviceAgent;
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
    implementation_->serviceAgent.assetPresent = present;
}

void AgentHost::setPollInterval(unsigned int seconds) {
    implementation_->serviceAgent.asset.profile.setPollInterval(seconds);
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
    if (how == ThreadDestroy::unwind && !system::canUnwind()) {
        throw std::runtime_error("threads of this system cannot be unwound from outside");
    }
    settings().threadDestroy = how;
}

bool AgentHost::endThreads() {
    return runtime().endAll();
}

std::int8_t AgentHost::audit(const char* message) {
    return callAuditHook(message);
}

}  // namespace agent
