// Exports of the data-source extension.
#include "ZephanRSMLogger.h"
#include "controller/ZephanRSMSingleTon.h"
#include "entry/Lifecycle.h"
#include "platform/agent/Logging.h"
#include "platform/agent/Messaging.h"
#include "platform/portable/EchoWithoutWait.h"
#include "platform/portable/Guard.h"
#include "scheduling/PropertyAnswer.h"
#include "scheduling/ScheduleRSMHandler.h"

#include <array>
#include <cstddef>
#include <string_view>

namespace {

constexpr std::int32_t kDone = 0;
constexpr std::int32_t kFailed = 1;
constexpr std::int32_t kNotRecognised = 2;

// The records as the host lays them out: nothing but these fields, back to back.
static_assert(offsetof(PropList, properties) == 0 && offsetof(PropList, count) == sizeof(void*));
static_assert(offsetof(Prop, name) == 0 && offsetof(Prop, field2) == sizeof(char*) &&
              offsetof(Prop, field3) == 2 * sizeof(char*) && offsetof(Prop, value) == 3 * sizeof(char*) &&
              sizeof(Prop) == 4 * sizeof(char*));
static_assert(sizeof(void*) != 4 || (sizeof(PropList) == 8 && sizeof(Prop) == 16));

void answer(PropList** response, const char* result) noexcept {
    giveAnswer(response, std::array<AnswerEntry, 1>{{{"CommandResult", result}}});
}

std::int32_t exitRSM(ZephanRSMSingleTon& controller, PropList** response) {
    if (controller.getRSMMode() == rsm::kNotActive) {
        KRXLog(level::kWarn, "\n Agent is not in RSM. ");
        answer(response, "Agent is not in RSM.");
        return kFailed;
    }
    KRXLog(level::kWarn, "\n GOING TO Exit from RSM. ");
    KRX::Messaging::SerializableString result("SerializableString", nullptr);
    controller.Disconnect("test123", result);
    const char* const text = result.GetValue() == nullptr ? "" : result.GetValue();
    KRXLog(level::kWarn, "\n Exit Command Result = %s ", text);
    answer(response, text);
    return kDone;
}

std::int32_t execute(const char* command, const PropList* input, PropList** response) {
    const auto controller = ZephanRSMSingleTon::getInstance();
    if (controller == nullptr) {
        KRXLog(
            level::kError,
            "RSM Singleton pointer null in KRXRSMExecuteCommandDSExecute. Need to ave the same initialized correctly in WSEStartup. Returning... \n");
        return kFailed;
    }
    ScheduleRSMHandler* const handler = controller->getScheduleHandler();
    if (handler == nullptr) {
        KRXLog(level::kError, "RSMDSExtnExecute: Error in getting RSM Handler.\n");
        return kFailed;
    }
    const std::string_view name = command == nullptr ? "" : command;
    if (name != "ScheduleRSM" && name != "ExitRSM") {
        return kNotRecognised;
    }
    KRXLog(level::kForce, "\n %s Command received for execution", command);
    return name == "ExitRSM" ? exitRSM(*controller, response)
                             : handler->executeScheduleCommand(input, response, *controller);
}

}  // namespace

extern "C" {

std::int8_t ZPXRSMDSStartup(void** handle, const char* scheduleFilePath) {
    return platform::guarded(platform::kFailure, [&] {
        ZephanRSMSingleTon::Reference controller;
        bool made = false;
        {
            const entry::Lifecycle lifecycle(entry::Lifecycle::Kind::Start);
            controller = lifecycle.controllerForStart();
            made = controller != nullptr && controller->createScheduleHandler(scheduleFilePath);
        }
        if (made) {
            controller->getScheduleHandler()->reportLoad();
        }
        if (controller == nullptr || controller->getScheduleHandler() == nullptr) {
            KRXLog(level::kForce, "RSMDSExtn ERROR: Failed to create ScheduleRSMHandler object.");
            return platform::kFailure;
        }
        if (handle != nullptr) {
            *handle = controller->getScheduleHandler();
        }
        KRXLog(level::kForce, lines::kStarted, lines::kDataSource);
        return platform::kSuccess;
    });
}

std::int8_t ZPXRSMDSShutdown(void) {
    return platform::answerAfter(platform::kSuccess, [] {
        const platform::EchoWithoutWait echo(platform::EchoWithoutWait::Kind::Stop);
        KRXLog(level::kForce, lines::kStopped, lines::kDataSource);
    });
}

std::int32_t ZPXRSMDSGet(void) {
    return kNotRecognised;
}

std::int32_t ZPXRSMDSSet(void) {
    return kNotRecognised;
}

std::int32_t ZPXRSMDSExectue(void* /*reserved1*/, void* /*reserved2*/, const char* command,
                             const PropList* input, PropList** response) {
    return platform::guarded(kFailed, [&] { return execute(command, input, response); });
}

std::int8_t ZPXRSMDSDestoryResponse(void) {
    return platform::kFailure;
}

std::int8_t ZPXRSMDSDestroyPropList(void* /*reserved1*/, void* /*reserved2*/, PropList* list) {
    const std::int8_t result = platform::answerAfter(platform::kSuccess, [list] {
        if (list == nullptr) {
            KRXLog(level::kError, "ZPXRSMDSDestroyPropList: null property list, nothing to destroy?!\n");
        } else if (list->properties == nullptr) {
            KRXLog(level::kError, "ZPXRSMDSDestroyPropList: null properties array?!\n");
        } else {
            KRXLog(level::kError, "\n ZPXRSMDSDestroyPropList: deleting properties.... \n");
        }
    });
    if (list != nullptr) {
        releaseProperties(list);
    }
    return result;
}
}
