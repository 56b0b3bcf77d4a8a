// What a host program may watch.
#pragma once

#include "lib/Enterprise.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace agent {

/// Told of what happens in the agent's libraries, on the thread that does it (`Thread::current()`), without
/// any lock of the libraries held. Several threads may call at once. No call may throw through the module.
class Observer {
  public:
    virtual ~Observer() = default;

    /// A formatted log line, before it goes to the log hook.
    virtual void onLog(int /*level*/, std::string_view /*text*/) {}
    /// The registration proxy received credentials of this member (null when they name none).
    virtual void onCredentials(const char* /*memberId*/) {}
    virtual void onForcePoll() {}
    /// A record was sent, or could not be: the result and what it carried.
    virtual void onUpdateAsset(std::int8_t /*result*/, const NamedValues& /*properties*/) {}
    /// A thread was to be started; 0 when it was.
    virtual void onThreadStart(const std::string& /*name*/, std::int8_t /*result*/) {}
    /// The calling thread's entry function returned.
    virtual void onThreadEnd(int /*result*/) {}
    /// A thread was ended before its entry function returned.
    virtual void onThreadDestroyed(const std::string& /*name*/) {}
    /// The calling thread is about to sleep.
    virtual void onSleep(unsigned int /*milliseconds*/) {}
};

}  // namespace agent
