#pragma once

#include <cstdint>

/// The agent's level scale.
namespace level {
constexpr std::int32_t kTrace = 20;
constexpr std::int32_t kInfo = 30;
constexpr std::int32_t kWarn = 40;
constexpr std::int32_t kError = 50;
/// Of the default configuration only, no level of a message: nothing but `kForce` passes it.
constexpr std::int32_t kDefault = 80;
constexpr std::int32_t kForce = 250;
constexpr std::int32_t kAudit = 254;
}  // namespace level
