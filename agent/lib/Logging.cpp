#include "platform/agent/Logging.h"

#include "lib/LogLock.h"
#include "lib/Observer.h"
#include "lib/Plugs.h"
#include "lib/Thread.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>
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
    std::va_list arguments;
    std::va_list again;
    va_start(arguments, format);
    va_copy(again, arguments);
    // The analyzer, given several files at once, takes the lists for empty ones.
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized)
    const int length = std::vsnprintf(nullptr, 0, format, arguments);
    va_end(arguments);
    const std::size_t size = length < 0 ? 0 : static_cast<std::size_t>(length) + 1;
    const std::unique_ptr<char[]> text(length < 0 ? nullptr : new (std::nothrow) char[size]);
    if (text != nullptr) {
        std::vsnprintf(text.get(), size, format, again);  // NOLINT(clang-analyzer-valist.Uninitialized)
    }
    va_end(again);
    if (text == nullptr) {
        return;  // A line that finds no memory is lost; its writer goes on.
    }
    try {
        deliver(level, text.get());
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
