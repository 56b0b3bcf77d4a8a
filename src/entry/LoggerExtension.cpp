// Exports of the logger extension.
#include "ZephanRSMLogger.h"
#include "controller/ZephanRSMSingleTon.h"
#include "entry/Lifecycle.h"
#include "entry/TextCopy.h"
#include "logging/ConfigHandler.h"
#include "platform/Console.h"
#include "platform/agent/Logging.h"
#include "platform/portable/Guard.h"
#include "platform/portable/ScopeGuard.h"

namespace {

// The host's names of the levels are the agent's.
static_assert(ZP_LEVEL_TRACE == level::kTrace && ZP_LEVEL_INFO == level::kInfo &&
              ZP_LEVEL_WARN == level::kWarn && ZP_LEVEL_ERROR == level::kError &&
              ZP_LEVEL_FORCE == level::kForce && ZP_LEVEL_AUDIT == level::kAudit);

std::int8_t startUp(const char* initParam) {
    if (initParam == nullptr || *initParam == '\0') {
        KRXLog(level::kError, "RSM Logger Extension: InitParam is not defined in Agent Config file");
        return platform::kFailure;
    }
    const entry::Lifecycle lifecycle(entry::Lifecycle::Kind::Start);
    if (!entry::load(initParam)) {
        return platform::kFailure;
    }
    const auto controller = lifecycle.controllerForStart();
    ConfigHandler* const handler = controller == nullptr ? nullptr : controller->getConfigHandler();
    if (handler == nullptr) {
        KRXLog(level::kError, "Error in getting ConfigHandler pointer. %s startup aborted.\n",
               lines::kLogger);
        return platform::kFailure;
    }
    // One that fails, in its last line perhaps, does not count.
    bool started = handler->isLoggerStarted();
    const platform::ScopeGuard outcome([&] { handler->setLoggerStarted(started); });
    handler->setLoggerStarted(true);
    handler->getLogManager().initialize();
    KRXLog(level::kForce, lines::kStarted, lines::kLogger);
    started = true;
    return platform::kSuccess;
}

/// Delivers one message with `deliver` and echoes it, even when it cannot be delivered.
template <typename Delivery>
std::int8_t take(const char* message, Delivery&& deliver) {
    if (message == nullptr) {
        return platform::answerAfter(platform::kFailure, [] {
            KRXLog(level::kError, "Remote Detection LoggerLog: NULL message pointer %x", 0U);
        });
    }
    // The host may use its own text for the next message as soon as something is logged.
    const entry::TextCopy copy(message);
    platform::attempt([&] {
        if (const auto controller = ZephanRSMSingleTon::getInstance()) {
            if (ConfigHandler* const handler = controller->getConfigHandler()) {
                deliver(handler->getLogManager(), copy.text());
            }
        }
    });
    platform::echo(copy.text());
    return platform::kSuccess;
}

}  // namespace

extern "C" {

std::int8_t ZPXRSMLoggerStatup(const char* initParam) {
    return platform::guarded(platform::kFailure, [&] { return startUp(initParam); });
}

std::int8_t ZPXRSMLoggerShutdown(void) {
    return platform::answerAfter(platform::kSuccess, [] {
        const entry::Lifecycle lifecycle(entry::Lifecycle::Kind::Stop);
        entry::endAll();
        // A hook that stays would lead into a library that is gone.
        KRXLogSetFunc(nullptr);
        KRXLogSetAuditFunc(nullptr);
        KRXLog(level::kForce, lines::kStopped, lines::kLogger);
    });
}

std::int8_t ZPXRSMLoggerLog(std::uint8_t level, const char* message) {
    return take(message, [&](LogManager& manager, const char* text) { manager.log(level, text); });
}

std::int8_t ZPXRSMLoggerAudit(const char* message) {
    return take(message, [](LogManager& manager, const char* text) { manager.audit(text); });
}
}
