// A profile whose record answers another list of properties than its own.
#include "controller/ProfileReport.h"
#include "controller/RsmState.h"
#include "lib/AgentHost.h"
#include "platform/agent/Registration.h"
#include "support/Lines.h"

#include <optional>
#include <string>
#include <utility>

#include <gtest/gtest.h>

namespace {

/// What a record answers instead of its own list.
std::optional<KRX::Messaging::SerializableArray*> otherList;

}  // namespace

namespace KRX::Services::RegistrationNS {

/// Stands before the agent's.
__attribute__((visibility("default"))) Messaging::SerializableArray* Asset::GetProperties() {
    return otherList.value_or(
        const_cast<Messaging::SerializableArray*>(std::as_const(*this).GetProperties()));
}

}  // namespace KRX::Services::RegistrationNS

namespace {

TEST(ProfileReport, ListOfProperties) {
    support::Lines lines;
    agent::AgentHost host({&lines, nullptr, nullptr});
    ProfileReport profile;
    profile.setServiceAgent(host.serviceAgent());
    const auto sendWith = [&](KRX::Messaging::SerializableArray* list) {
        lines.take();
        testing::internal::CaptureStdout();
        otherList = list;
        profile.send(RsmState());
        otherList.reset();
        return testing::internal::GetCapturedStdout() + "|" + lines.take();
    };
    EXPECT_EQ(sendWith(nullptr), "Prop list is NULL |");
    // One that could not be emptied.
    KRX::Messaging::SerializableArray list;
    KRX::Services::RegistrationNS::Property left("update", "left", "1", "Property");
    list.AddEntry(&left);
    EXPECT_TRUE(sendWith(&list).starts_with(
        "LENGTH IS 1|40 \n Added property Successfully |40 \n Properties Updated Succesfully.....\n|"));
    EXPECT_EQ(list.GetCount(), 1) << "what was added is taken out again";
}

}  // namespace
