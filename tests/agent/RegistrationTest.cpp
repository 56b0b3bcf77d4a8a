#include "lib/AgentHost.h"
#include "lib/Insides.h"
#include "lib/Observer.h"
#include "platform/agent/Registration.h"
#include "platform/agent/ServiceAgent.h"

#include <memory>
#include <string>

#include <gtest/gtest.h>

namespace agent {
namespace {

using KRX::Messaging::Headers::Credentials;
using KRX::Messaging::Headers::SecurityContext;
using KRX::Services::RegistrationNS::Asset;
using KRX::Services::RegistrationNS::Property;
using KRX::Services::RegistrationNS::RegistrationProxy;

class Journal final : public Observer, public Enterprise {
  public:
    void onCredentials(const char* member) override {
        text += std::string("credentials ") + (member ? member : "-");
    }
    void onUpdateAsset(std::int8_t result, const NamedValues& properties) override {
        text += "update " + std::to_string(result) + " " + std::to_string(properties.size());
    }
    std::int8_t receive(const std::string& member, const NamedValues& properties) override {
        for (const auto& [name, value] : properties) {
            text += name + "=" + value.value_or("null") + ";";
        }
        text += " from " + member + ", ";
        return answer;
    }
    std::string take() { return std::exchange(text, {}); }

    std::string text;
    std::int8_t answer = 0;
};

TEST(Registration, ProxyNeedsChannelAndCredentials) {
    Journal journal;
    AgentHost host({&journal, &journal, nullptr});
    auto* asset = host.serviceAgent()->GetAsset(0);
    Asset record("Asset");
    record.CopyFrom(asset->GetAssetProfile());
    record.ClearProperties();
    record.GetProperties()->AddEntry(new Property("update", "A", nullptr, "Property"));
    record.GetProperties()->AddEntry(new Property("update", "B", "1", "Property"));

    RegistrationProxy proxy("Registration", "/", "urn");
    EXPECT_EQ(proxy.UpdateAsset(record, 0), -1);
    proxy.SetOCM(asset->GetOCM());
    EXPECT_EQ(proxy.UpdateAsset(record, 0), -1);
    EXPECT_EQ(journal.take(), "update -1 2update -1 2");
    SecurityContext context("SecurityContext");
    {
        Credentials credentials("Credentials");
        credentials.SetMemberId("member");
        credentials.SetPassword("secret");
        context.SetCredentials(&credentials);
    }
    EXPECT_EQ(proxy.SetSecurityContext(context), 0);
    EXPECT_EQ(journal.take(), "credentials member");
    EXPECT_EQ(proxy.UpdateAsset(record, 0), 0);
    EXPECT_EQ(journal.take(), "A=null;B=1; from device-0042, update 0 2");
    journal.answer = -3;
    EXPECT_EQ(proxy.UpdateAsset(record, 0), -3);
    EXPECT_EQ(journal.take(), "A=null;B=1; from device-0042, update -3 2");

    journal.answer = 0;
    for (const auto& [action, element] : {std::pair{"update", "property"}, std::pair{"delete", "Property"}}) {
        record.GetProperties()->AddEntry(new Property(action, "C", nullptr, element));
        EXPECT_EQ(proxy.UpdateAsset(record, 0), -1);
        EXPECT_EQ(journal.take(), "update -1 3")
            << "the enterprise has not heard of " << action << " " << element;
        auto* const last = static_cast<Property*>(entryOf(*record.GetProperties(), 2));
        record.GetProperties()->RemoveEntry(last);
        delete last;
    }
    Asset other("Device");
    other.CopyFrom(record);
    EXPECT_EQ(proxy.UpdateAsset(other, 0), -1);
    EXPECT_EQ(journal.take(), "update -1 2");
}

}  // namespace
}  // namespace agent
