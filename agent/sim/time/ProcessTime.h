// The time that the module sees in this process.
#pragma once

#include <chrono>
#include <cstdint>

namespace sim {

class Clock;

/// While `clock` is not null, time() answers its wall clock and files that the module makes or writes get it
/// as their modification time. Null before the clock goes away.
void showTimeOf(const Clock* clock);
/// Where the module's code lies in memory; two zeros when it is not loaded.
void setModuleImage(std::uintptr_t begin, std::uintptr_t end);

/// The shown wall clock, or the system's, since 1970.
std::chrono::microseconds shownTime();
/// Whether a call that returns to `address` came from the module while a clock is shown.
bool isModuleCall(const void* address);

}  // namespace sim
