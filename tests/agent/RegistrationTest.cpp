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
    void onForcePoll() override { text += "poll"; }
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

TEST(Registration, RecordsAreCopiedDeeply) {
    Asset copy("Asset");
    {
        DeviceRecord source;
        source.setMember("member", "secret");
        source.setPollInterval(90);
        auto* property = new Property("update", "A", "1", "Property");
        source.GetProperties()->AddEntry(property);
        copy.GetProperties()->AddEntry(new Property("update", "old", nullptr, "Property"));
        copy.CopyFrom(source);
        property->SetValue("2");
    }
    ASSERT_EQ(copy.GetProperties()->GetCount(), 1);
    const auto& property = *static_cast<Property*>(entryOf(*copy.GetProperties(), 0));
    EXPECT_STREQ(textsOf(property).name, "A");
    EXPECT_STREQ(textsOf(property).value, "1");
    EXPECT_STREQ(copy.GetMemberName(), "member");
    EXPECT_EQ(copy.GetCurrentPollInterval(), 90U);
}

TEST(Registration, ListsDoNotOwnWhatIsTakenOut) {
    Property mine("update", "A", nullptr, "Property");
    Asset record("Asset");
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(record.GetProperties()->AddEntry(new Property("update", "x", nullptr, "Property")), 0);
    }
    record.GetProperties()->AddEntry(&mine);
    EXPECT_EQ(record.GetProperties()->RemoveEntry(&mine), 0);
    EXPECT_EQ(record.GetProperties()->RemoveEntry(&mine), -1);
    EXPECT_EQ(record.GetProperties()->GetCount(), 20);
    EXPECT_EQ(entryOf(*record.GetProperties(), 20), nullptr);
    EXPECT_EQ(entryOf(*record.GetProperties(), -1), nullptr);
}

TEST(Registration, AssetOfTheHost) {
    Journal journal;
    AgentHost host({&journal, nullptr, nullptr});
    auto* asset = host.serviceAgent()->GetAsset(0);
    ASSERT_NE(asset, nullptr);
    EXPECT_EQ(host.serviceAgent()->GetAsset(1), nullptr);
    EXPECT_EQ(asset->GetAssetProfile().GetCurrentPollInterval(), 60U);
    EXPECT_GT(asset->GetAssetProfile().GetProperties()->GetCount(), 0);
    host.setAssetPresent(false);
    host.setPollInterval(15);
    EXPECT_EQ(host.serviceAgent()->GetAsset(0), nullptr);
    EXPECT_EQ(asset->GetAssetProfile().GetCurrentPollInterval(), 15U);
    asset->ForcePoll();
    EXPECT_EQ(journal.take(), "poll");
}

TEST(Registration, TextsAreReplaced) {
    char* text = nullptr;
    EXPECT_EQ(delanddup(text, "first"), 0);
    EXPECT_EQ(delanddup(text, text + 2), 0);
    EXPECT_STREQ(text, "rst");
    EXPECT_EQ(delanddup(text, nullptr), 0);
    EXPECT_EQ(text, nullptr);
}

}  // namespace
}  // namespace agent
