#include "platform/agent/Logging.h"

#include "Observer.h"
#include "Plugs.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <new>
namespace {

std::atomic<KRXLogHook> logHook = nullptr;
std::atomic<KRXLogAuditHook> auditHook = nullptr;
std::atomic<bool> routing = true;

void deliver(int level, const char* text) {
    agent::observer().onLog(level, text);
    const KRXLogHook hook = logHook;
    if (hook != nullptr && routing) {
        hook(static_cast<std::uint8_t>(level), text);
    }
}

}  // namespace

void KRXLog(int level, const char* format, ...) {
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

void setLogRouting(bool on) {
    routing = on;
}

std::int8_t callAuditHook(const char* message) {
    const KRXLogAuditHook hook = auditHook;
    return hook == nullptr ? std::int8_t{-1} : hook(message);
}

}  // namespace agent
