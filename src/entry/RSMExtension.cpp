// Exports of the RSM extension.
#include "ZephanRSMLogger.h"
#include "config/XMLConfigData.h"
#include "controller/ZephanRSMSingleTon.h"
#include "entry/Lifecycle.h"
#include "logging/ConfigHandler.h"
#include "platform/agent/Logging.h"
#include "platform/portable/Guard.h"
#include "platform/portable/Text.h"
#include "scheduling/ScheduleRSMHandler.h"

#include <string>

namespace {

/// Loads the configuration unless there is one. False, with a log line, when it cannot be loaded.
bool ensureConfiguration(const char* initParam) {
    if (XMLConfigData::instance() != nullptr) {
        return true;
    }
    const std::string path(platform::trimmed(initParam == nullptr ? "" : initParam));
    if (path.empty()) {
        KRXLog(level::kError, "RSM Extension: InitParam is not defined in Agent Config file");
        return false;
    }
    return entry::load(path);
}

std::int8_t startUp(void** handle, ZPServiceAgent* serviceAgent, const char* initParam) {
    ZephanRSMSingleTon::Reference controller;
    {
        const entry::Lifecycle lifecycle(entry::Lifecycle::Kind::Start);
        if (!ensureConfiguration(initParam)) {
            return platform::kFailure;
        }
        controller = lifecycle.controllerForStart();
    }
    if (controller == nullptr) {
        KRXLog(level::kError, "ZPRSMExtStartup: Failed to create a new ZephanRSMSingleTon object.");
        return platform::kFailure;
    }
    controller->setServiceAgent(serviceAgent);
    if (handle != nullptr) {
        *handle = controller.get();
    }
    // From here on the enterprise is told, which may take its time: a stop does not wait for that.
    if (const auto configuration = XMLConfigData::instance()) {
        if (const auto saved = controller->readResumeState(configuration->getRSMResumeStatusFile())) {
            controller->resumeSavedRSM(*saved);
        }
    }
    if (ScheduleRSMHandler* const handler = controller->getScheduleHandler(); handler == nullptr) {
        KRXLog(level::kForce, "Unable to get Handler for ScheduleRSMHandler in ZPRSMExtStartup.\n");
    } else if (handler->isScheduleCurrent()) {
        handler->scheduleRSM(*controller);
    }
    KRXLog(level::kForce, lines::kStarted, lines::kRsm);
    return platform::kSuccess;
}

std::int8_t shutDown(const void* handle) {
    if (handle == nullptr) {
        KRXLog(level::kWarn, "ZPRSMExtShutdown : RSM extension handle is NULL.");
        return platform::kFailure;
    }
    const entry::Lifecycle lifecycle(entry::Lifecycle::Kind::Stop);
    const auto controller = ZephanRSMSingleTon::getInstance();
    if (controller != nullptr && controller->getScheduleHandler() != nullptr) {
        controller->getScheduleHandler()->performCleanUp(*controller);
    }
    if (controller == nullptr || controller->getConfigHandler() == nullptr) {
        KRXLog(level::kError, "Error in getting ConfigHandler pointer. %s startup aborted.\n",
               lines::kLogger);
        return platform::kFailure;
    }
    if (!controller->getConfigHandler()->isLoggerStarted()) {
        entry::endAll();
    }
    return platform::answerAfter(platform::kSuccess,
                                 [] { KRXLog(level::kForce, lines::kStopped, lines::kRsm); });
}

}  // namespace

extern "C" {

std::int8_t ZPRSMExtnStartup(void** handle, ZPServiceAgent* serviceAgent, const char* initParam) {
    return platform::guarded(platform::kFailure, [&] { return startUp(handle, serviceAgent, initParam); });
}

std::int8_t ZPRSMExtnShutdown(void* handle) {
    return platform::guarded(platform::kFailure, [&] { return shutDown(handle); });
}
}
