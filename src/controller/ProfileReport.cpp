// The RSM profile: eight properties of the agent's asset 0, sent to the enterprise and written to the log.
#include "controller/ZephanRSMSingleTon.h"
#include "platform/Console.h"
#include "platform/agent/Logging.h"
#include "platform/agent/ServiceAgent.h"
#include "scheduling/GmtClock.h"

#include <array>
#include <cstdio>
#include <exception>
#include <span>

using KRX::Services::RegistrationNS::Asset;
using KRX::Services::RegistrationNS::Property;

namespace {

using ValueText = std::array<char, 40>;

const char* modeName(std::int32_t mode) noexcept {
    switch (mode) {
        case rsm::kForcePollGrace:
            return "FORCE_POLL_GRACE";
        case rsm::kForcePollActivity:
            return "FORCE_POLL_ACTIVITY";
        default:
            return "NOT_ACTIVE";
    }
}

/// Takes properties that are the caller's own out of a record's list again, which otherwise releases them.
class Withdrawal final {
  public:
    Withdrawal(KRX::Messaging::SerializableArray& list, std::span<Property> properties) noexcept
        : list_(list), properties_(properties) {}
    Withdrawal(const Withdrawal&) = delete;
    Withdrawal& operator=(const Withdrawal&) = delete;
    ~Withdrawal() {
        for (Property& property : properties_) {
            list_.RemoveEntry(&property);
        }
    }

  private:
    KRX::Messaging::SerializableArray& list_;
    std::span<Property> properties_;
};

ValueText numberText(double value) noexcept {
    ValueText text{};
    std::snprintf(text.data(), text.size(), "%lld", static_cast<long long>(value));
    return text;
}

ValueText dateText(std::int64_t gmtClockValue) noexcept {
    ValueText text{"0"};
    if (gmtClockValue != 0) {
        ZephanRSMSingleTon::dateToString(gmtClockValue, text.data());
    }
    return text;
}

}  // namespace

void ZephanRSMSingleTon::dateToString(std::int64_t gmtClockValue, char* text) noexcept {
    if (text == nullptr) {
        KRXLog(250, "Received NULL pointer in dateToString of ZephanRSMSingleTon.");
        return;
    }
    const auto fields = scheduling::gmtFields(gmtClockValue);
    std::snprintf(text, ValueText().size(), "%d-%02d-%02d GMT %02d:%02d:%02d", fields.year, fields.day,
                  fields.month, fields.hour, fields.minute, fields.second);
}

void ZephanRSMSingleTon::UpdateProperty() noexcept {
    ZephanRSMSingleTon* const controller = getInstance();
    if (controller == nullptr) {
        KRXLog(50, "Failed to get RSMSingleton pointer in UpdateProperty. Returning... \n");
        return;
    }
    KRX::ServiceAgentNS::ServiceAgent* const agent = controller->serviceAgent_;
    if (agent == nullptr) {
        KRXLog(50, "Can't send RSM profile to enterprise: Service agent is null\n");
        return;
    }
    KRX::ServiceAgentNS::VirtualAsset* const asset = agent->GetAsset(0);
    if (asset == nullptr) {
        KRXLog(50, "Can't send RSM profile to enterprise: Virtaul Asset 0 is null\n");
        return;
    }
    try {
        Asset record("Asset");
        record.CopyFrom(asset->GetAssetProfile());
        record.ClearProperties();

        const State state = controller->state();
        Property properties[] = {
            {"update", "RSM_MODE", modeName(state.rsmMode), "Property"},
            {"update", "RSM_START_TIME", nullptr, "Property"},
            {"update", "RSM_MODE_START_TIME", nullptr, "Property"},
            {"update", "RSM_GRACE_PERIOD", numberText(state.gracePeriod).data(), "Property"},
            {"update", "RSM_FORCED_POLLING_RATE", numberText(state.pollingRate).data(), "Property"},
            {"update", "RSM_DELAY_PROFILE_START_TIME", nullptr, "Property"},
            {"update", "RSM_DELAY_PROFILE_FORCED_POLLING_RATE", numberText(state.delayedPollingRate).data(),
             "Property"},
            {"update", "RSM_DELAY_PROFILE_GRACE_PERIOD", numberText(state.delayedGracePeriod).data(),
             "Property"},
        };
        properties[1].SetValue(dateText(state.rsmStartTime).data());
        properties[2].SetValue(dateText(state.modeStartTime).data());
        properties[5].SetValue(dateText(state.delayedStartTime).data());

        KRX::Messaging::SerializableArray* const list = record.GetProperties();
        if (list == nullptr) {
            platform::echo("Prop list is NULL ");
            return;
        }
        if (const int length = list->GetCount(); length > 0) {
            KRXLog(40, "\n Added property Successfully ");
            ValueText text{};
            std::snprintf(text.data(), text.size(), "LENGTH IS %d", length);
            platform::echo(text.data());
        }
        const Withdrawal withdrawal(*list, properties);
        for (Property& property : properties) {
            list->AddEntry(&property);
        }
        const bool updated = controller->registrationProxy_.UpdateAsset(record, 0) == 0;
        if (updated) {
            KRXLog(40, "\n Properties Updated Succesfully.....\n");
            LogRSMProfile();
        } else {
            KRXLog(40, "\n Failed to Update Properties...... \n");
        }
    } catch (const std::exception&) {
        // Memory ran out in the agent's objects: as when the enterprise refuses. The next report sends all
        // again.
        KRXLog(40, "\n Failed to Update Properties...... \n");
    }
}

void ZephanRSMSingleTon::LogRSMProfile() noexcept {
    ZephanRSMSingleTon* const controller = getInstance();
    if (controller == nullptr) {
        KRXLog(50, "Failed to get RSMSingleton pointer in LogRSMProfile. Returning... \n");
        return;
    }
    const State state = controller->state();
    const auto logDate = [](std::int64_t time, const char* line, const char* lineWithoutTime) {
        if (time == 0) {
            KRXLog(250, "%s", lineWithoutTime);
        } else {
            KRXLog(250, " %s = %s \n", line, dateText(time).data());
        }
    };
    KRXLog(250, " RSM_MODE = %s \n", modeName(state.rsmMode));
    logDate(state.rsmStartTime, "RSM_START_TIME", " RSM_START_TIME = 0 \n");
    logDate(state.modeStartTime, "RSM_MODE_START_TIME", " RSM_MODE_START_TIME = 0\n");
    KRXLog(250, " RSM_GRACE_PERIOD = %s \n", numberText(state.gracePeriod).data());
    KRXLog(250, " RSM_FORCED_POLLING_RATE = %d \n", state.pollingRate);
    logDate(state.delayedStartTime, "RSM_DELAY_PROFILE_START_TIME", " RSM_DELAY_PROFILE_START_TIME = 0\n");
    KRXLog(250, " RSM_DELAY_PROFILE_FORCED_POLLING_RATE = %s \n",
           numberText(state.delayedPollingRate).data());
    KRXLog(250, " RSM_DELAY_PROFILE_GRACE_PERIOD = %s \n", numberText(state.delayedGracePeriod).data());
}
