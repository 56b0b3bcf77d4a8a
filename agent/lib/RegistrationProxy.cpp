#include "lib/Insides.h"
#include "lib/OCM.h"
#include "lib/Observer.h"
#include "lib/Plugs.h"
#include "lib/Thread.h"
#include "platform/agent/Registration.h"

#include <memory>
#include <mutex>
#include <string_view>

namespace KRX::Services::RegistrationNS {

namespace {

std::string orEmpty(const char* text) {
    return text == nullptr ? "" : text;
}

agent::NamedValues valuesOf(const Messaging::SerializableArray& properties) {
    agent::NamedValues values;
    for (int i = 0; i < properties.GetCount(); ++i) {
        const auto [action, name, value] =
            agent::textsOf(*static_cast<const Property*>(agent::entryOf(properties, i)));
        values.emplace_back(orEmpty(name),
                            value == nullptr ? std::nullopt : std::optional<std::string>(value));
    }
    return values;
}

/// An enterprise takes an asset whose properties are to be updated, and no other elements.
bool isUpdate(const Asset& asset) {
    if (std::string_view("Asset") != asset.GetElementName()) {
        return false;
    }
    const Messaging::SerializableArray& properties = *asset.GetProperties();
    for (int i = 0; i < properties.GetCount(); ++i) {
        const auto& property = *static_cast<const Property*>(agent::entryOf(properties, i));
        if (std::string_view("Property") != property.GetElementName() ||
            orEmpty(agent::textsOf(property).action) != "update") {
            return false;
        }
    }
    return true;
}

}  // namespace

struct RegistrationProxy::Implementation {
    std::mutex mutex;  ///< guards the channel and the context
    Messaging::OCM* channel = nullptr;
    Messaging::Headers::SecurityContext context{"SecurityContext"};
};

// The wire request goes through the asset's channel, which needs neither the service's name nor its address.
RegistrationProxy::RegistrationProxy(const char* /*serviceName*/, const char* /*requestUri*/,
                                     const char* /*serviceNamespace*/)
    : implementation_(std::make_unique<Implementation>().release()) {}

RegistrationProxy::~RegistrationProxy() {
    delete implementation_;
}

std::int8_t RegistrationProxy::UpdateAsset(Asset& asset, int /*flags*/) {
    const agent::AgentCall call("UpdateAsset");
    Messaging::OCM* channel = nullptr;
    {
        const std::lock_guard lock(implementation_->mutex);
        if (agent::credentialsOf(implementation_->context) != nullptr) {
            channel = implementation_->channel;
        }
    }
    const agent::NamedValues properties = valuesOf(*asset.GetProperties());
    const std::int8_t result = channel == nullptr || !isUpdate(asset)
                                   ? std::int8_t{-1}
                                   : channel->deliver(orEmpty(asset.GetMemberName()), properties);
    agent::observer().onUpdateAsset(result, properties);
    return result;
}

void RegistrationProxy::SetOCM(Messaging::OCM* channel) {
    const std::lock_guard lock(implementation_->mutex);
    implementation_->channel = channel;
}

std::int8_t RegistrationProxy::SetSecurityContext(Messaging::Headers::SecurityContext& context) {
    {
        const std::lock_guard lock(implementation_->mutex);
        if (agent::copySecurity(context, implementation_->context) != 0) {
            return -1;
        }
    }
    const Messaging::Headers::Credentials* credentials = agent::credentialsOf(context);
    agent::observer().onCredentials(credentials == nullptr ? nullptr : agent::memberOf(*credentials));
    return 0;
}

}  // namespace KRX::Services::RegistrationNS
