#include "controller/ProfileReport.h"

#include "controller/RsmState.h"
#include "logging/FollowedLines.h"
#include "platform/Console.h"
#include "platform/agent/Logging.h"
#include "platform/agent/ServiceAgent.h"
#include "platform/portable/Guard.h"
#include "platform/portable/ScopeGuard.h"
#include "records/GmtClock.h"

#include <array>
#include <cstdio>

using KRX::Services::RegistrationNS::Asset;
using KRX::Services::RegistrationNS::Property;

namespace {

using ValueText = std::array<char, 40>;

ValueText numberText(double value) noexcept {
    ValueText text{};
    std::snprintf(text.data(), text.size(), "%lld", static_cast<long long>(value));
    return text;
}

ValueText dateText(std::int64_t gmtClockValue) noexcept {
    ValueText text{"0"};
    if (gmtClockValue != 0) {
        ProfileReport::dateToString(gmtClockValue, text.data());
    }
    return text;
}

/// What the enterprise is told of a state, in this order.
struct Profile {
    explicit Profile(const RsmState& state)
        : properties{
              {"update", "RSM_MODE", rsm::nameOf(state.rsmMode), "Property"},
              {"update", "RSM_START_TIME", dateText(state.rsmStartTime).data(), "Property"},
              {"update", "RSM_MODE_START_TIME", dateText(state.modeStartTime).data(), "Property"},
              {"update", "RSM_GRACE_PERIOD", numberText(state.gracePeriod).data(), "Property"},
              {"update", "RSM_FORCED_POLLING_RATE", numberText(state.pollingRate).data(), "Property"},
              {"update", "RSM_DELAY_PROFILE_START_TIME", dateText(state.delayedStartTime).data(), "Property"},
              {"update", "RSM_DELAY_PROFILE_FORCED_POLLING_RATE", numberText(state.delayedPollingRate).data(),
               "Property"},
              {"update", "RSM_DELAY_PROFILE_GRACE_PERIOD", numberText(state.delayedGracePeriod).data(),
               "Property"},
          } {}

    Property properties[8];
};

}  // namespace

void ProfileReport::setServiceAgent(KRX::ServiceAgentNS::ServiceAgent* serviceAgent) {
    KRX::ServiceAgentNS::ServiceAgent* none = nullptr;
    if (serviceAgent == nullptr || !serviceAgent_.compare_exchange_strong(none, serviceAgent)) {
        return;
    }
    KRXLog(level::kWarn, lines::kServiceAgent);
    if (auto* const asset = findAsset()) {
        introduce(*asset);
    }
}

KRX::ServiceAgentNS::VirtualAsset* ProfileReport::findAsset() const {
    KRX::ServiceAgentNS::ServiceAgent* const agent = serviceAgent_;
    return agent == nullptr ? nullptr : agent->GetAsset(0);
}

ProfileReport::Client::Client(KRX::ServiceAgentNS::VirtualAsset& ofAsset)
    : asset(&ofAsset), proxy("Registration", "/krx/Registration", "urn:corvane-krx:Registration_v1_1") {
    const auto& record = ofAsset.GetAssetProfile();
    proxy.SetOCM(ofAsset.GetOCM());
    KRX::Messaging::Headers::Credentials credentials("Credentials");
    credentials.SetMemberId(record.GetMemberName());
    credentials.SetPassword(record.GetMemberPassword());
    KRX::Messaging::Headers::SecurityContext context("SecurityContext");
    context.SetCredentials(&credentials);
    proxy.SetSecurityContext(context);
}

std::shared_ptr<ProfileReport::Client> ProfileReport::clientOf(KRX::ServiceAgentNS::VirtualAsset& asset) {
    auto client = client_.get();
    if (client == nullptr || client->asset != &asset) {
        client =
            platform::guarded(std::shared_ptr<Client>(), [&] { return std::make_shared<Client>(asset); });
        if (client != nullptr) {
            client_.exchange(client);
        }
    }
    return client;
}

void ProfileReport::dateToString(std::int64_t gmtClockValue, char* text) {
    if (text == nullptr) {
        KRXLog(level::kForce, "Received NULL pointer in dateToString of ZephanRSMSingleTon.");
        return;
    }
    const auto fields = records::gmtFields(gmtClockValue);
    std::snprintf(text, ValueText().size(), "%d-%02d-%02d GMT %02d:%02d:%02d", fields.year, fields.day,
                  fields.month, fields.hour, fields.minute, fields.second);
}

void ProfileReport::send(const RsmState& state) {
    // What the agent throws, memory that ran out in its objects, say, is as a refusal by the enterprise. The next
    // report sends all.
    platform::attempt([&] {
        if (serviceAgent_ == nullptr) {
            KRXLog(level::kError, "Can't send RSM profile to enterprise: Service agent is null\n");
            return;
        }
        KRX::ServiceAgentNS::VirtualAsset* const asset = findAsset();
        if (asset == nullptr) {
            KRXLog(level::kError, "Can't send RSM profile to enterprise: Virtaul Asset 0 is null\n");
            return;
        }
        const auto client = clientOf(*asset);
        if (client == nullptr || !platform::guarded(false, [&] { return update(*client, state); })) {
            KRXLog(level::kWarn, lines::kReportFailed);
        }
    });
}

bool ProfileReport::update(Client& client, const RsmState& state) {
    Asset record("Asset");
    record.CopyFrom(client.asset->GetAssetProfile());
    record.ClearProperties();

    Profile profile(state);
    KRX::Messaging::SerializableArray* const list = record.GetProperties();
    if (list == nullptr) {
        platform::echo("Prop list is NULL ");
        return true;
    }
    if (const int length = list->GetCount(); length > 0) {
        KRXLog(level::kWarn, "\n Added property Successfully ");
        ValueText text{};
        std::snprintf(text.data(), text.size(), "LENGTH IS %d", length);
        platform::echo(text.data());
    }
    // They are not the record's own, which otherwise releases them.
    const platform::ScopeGuard withdrawal([&] {
        for (Property& property : profile.properties) {
            list->RemoveEntry(&property);
        }
    });
    for (Property& property : profile.properties) {
        list->AddEntry(&property);
    }
    if (client.proxy.UpdateAsset(record, 0) != 0) {
        return false;
    }
    KRXLog(level::kWarn, "\n Properties Updated Succesfully.....\n");
    LogRSMProfile(state);
    return true;
}

void ProfileReport::LogRSMProfile(const RsmState& state) {
    const auto logDate = [](std::int64_t time, const char* line, const char* lineWithoutTime) {
        KRXLog(level::kForce, time == 0 ? lineWithoutTime : line, dateText(time).data());
    };
    KRXLog(level::kForce, lines::kReportBegins, rsm::nameOf(state.rsmMode));
    logDate(state.rsmStartTime, " RSM_START_TIME = %s \n", " RSM_START_TIME = 0 \n");
    logDate(state.modeStartTime, " RSM_MODE_START_TIME = %s \n", " RSM_MODE_START_TIME = 0\n");
    KRXLog(level::kForce, " RSM_GRACE_PERIOD = %s \n", numberText(state.gracePeriod).data());
    KRXLog(level::kForce, " RSM_FORCED_POLLING_RATE = %d \n", state.pollingRate);
    logDate(state.delayedStartTime, " RSM_DELAY_PROFILE_START_TIME = %s \n",
            " RSM_DELAY_PROFILE_START_TIME = 0\n");
    KRXLog(level::kForce, " RSM_DELAY_PROFILE_FORCED_POLLING_RATE = %s \n",
           numberText(state.delayedPollingRate).data());
    KRXLog(level::kForce, lines::kReportEnds, numberText(state.delayedGracePeriod).data());
}
