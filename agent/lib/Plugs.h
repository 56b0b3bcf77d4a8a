// What the current host program plugged into the libraries.
#pragma once

#include "lib/Settings.h"

#include <cstdint>

namespace agent {

class Observer;
class Runtime;

/// The plugged-in observer, or one that does nothing.
Observer& observer();
/// The plugged-in runtime, or the one whose threads run freely.
Runtime& runtime();
/// How the agent behaves.
Settings& settings();

/// Plugs in both; null takes the defaults.
void plugIn(Observer* observer, Runtime* runtime);

/// Calls the audit hook; -1 when there is none.
std::int8_t callAuditHook(const char* message);

}  // namespace agent
