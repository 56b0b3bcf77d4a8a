// The agent's logging library, as the module uses it.
#pragma once

#include "platform/agent/Api.h"

#include <cstdint>

/// The level scale of messages.
namespace level {
constexpr std::int32_t kTrace = 20;
constexpr std::int32_t kInfo = 30;
constexpr std::int32_t kWarn = 40;
constexpr std::int32_t kError = 50;
constexpr std::int32_t kForce = 250;
constexpr std::int32_t kAudit = 254;
}  // namespace level

extern "C" {

/// Called by the logging library with every log message while set; the level is one of `level`.
using KRXLogHook = std::int8_t (*)(std::uint8_t level, const char* message);
/// Called by the logging library with every audit message while set.
using KRXLogAuditHook = std::int8_t (*)(const char* message);

/// Writes one message at `level`. Any thread. While the log hook is set the message may come back into it on
/// the same thread before the call returns.
KRX_API void KRXLog(int level, const char* format, ...) __attribute__((format(printf, 2, 3)));

/// Sets or, with null, clears the function that receives log messages. Any thread.
KRX_API void KRXLogSetFunc(KRXLogHook hook);
/// Sets or, with null, clears the function that receives audit messages. Any thread.
KRX_API void KRXLogSetAuditFunc(KRXLogAuditHook hook);
}
