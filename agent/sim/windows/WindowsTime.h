// The system's own header, and its scale of times.
#pragma once

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <chrono>
#include <cstdint>
#include <windows.h>

namespace sim {

/// `moment` counts from 1970, the system from 1601.
inline FILETIME fileTimeOf(std::chrono::microseconds moment) {
    constexpr std::chrono::seconds between(11'644'473'600);
    constexpr int ticksPerMicrosecond = 10;
    constexpr unsigned halfBits = 32;
    const auto ticks = static_cast<std::uint64_t>((moment + between).count()) * ticksPerMicrosecond;
    return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> halfBits)};
}

}  // namespace sim
