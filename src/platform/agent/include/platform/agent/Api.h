// How symbols of the agent's libraries cross a shared-library boundary. A port to a system with other rules
// (import declarations, for example) changes this file only.
#pragma once

#ifdef _WIN32
#ifdef KRX_AGENT_BUILD  // the agent's libraries themselves
#define KRX_API __declspec(dllexport)
#else
#define KRX_API __declspec(dllimport)
#endif
#else
#define KRX_API __attribute__((visibility("default")))
#endif
