#include "platform/agent/Logging.h"

#include "lib/LogLock.h"
#include "lib/Observer.h"
#include "lib/Plugs.h"
#include "lib/Thread.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <new>

namespace {

std::atomic<KRXLogHook> logHook = nullptr;
std::atomic<KRXLogAuditHook> auditHook = nullptr;

void deliver(int level, const char* text) {
    agent::observer().onLog(level, text);
    const KRXLogHook hook = logHook;
    if (hook != nullptr && agent::settings().routing) {
        const agent::ModuleCall call("the log hook");
        hook(static_cast<std::uint8_t>(level), text);
    }
}

}  // namespace

void KRXLog(int level, const char* format, ...) {
    const agent::AgentCall call("KRXLog");
    const agent::LogLock lock(agent::settings().logLock);
    char* text = nullptr;
    std::va_list arguments;
    va_start(arguments, format);
    const int length = ::vasprintf(&text, format, arguments);
    va_end(arguments);
    if (length < 0) {
        return;  // A line that finds no memory is lost; its writer goes on.
    }
    const std::unique_ptr<char, decltype(&std::free)> owner(text, &std::free);
    try {
        deliver(level, text);
    } catch (const std::bad_alloc&) {
        // As above.
    }
}

void KRXLogSetFunc(KRXLogHook hook) {
    logHook = hook;
}

void KRXLogSetAuditFunc(KRXLogAuditHook hook) {
    auditHook = hook;
}

namespace agent {

std::int8_t callAuditHook(const char* message) {
    const KRXLogAuditHook hook = auditHook;
    if (hook == nullptr) {
        return -1;
    }
    const ModuleCall call("the audit hook");
    return hook(message);
}

}  // namespace agent
