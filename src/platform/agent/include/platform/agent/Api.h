// How symbols of the agent's libraries cross a shared-library boundary. A port to a system with other rules
// (import declarations, for example) changes this file only.
#pragma once

#define KRX_API __attribute__((visibility("default")))
