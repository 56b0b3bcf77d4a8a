// Where the threads of the module come from and how they pass time.
#pragma once

#include <chrono>
#include <memory>

namespace agent {

class Thread;

/// Makes threads. The thread that a host program creates itself is a host thread; it sleeps through the
/// runtime.
class Runtime {
  public:
    virtual ~Runtime() = default;

    /// A thread ready to be started, or null when there is none to be had.
    virtual std::unique_ptr<Thread> construct() = 0;
    /// Blocks the calling host thread.
    virtual void sleepHost(std::chrono::milliseconds time) = 0;
};

}  // namespace agent
