// A thread that runs an entry function of the module.
#pragma once

#include "platform/agent/Api.h"
#include "platform/agent/Threads.h"

#include <chrono>
#include <csetjmp>
#include <string>

namespace agent {

/// Base of the runtimes' threads: what was given to the start, and the way out of a thread that is stopped. A
/// stopped thread leaves at its next sleep, straight to the frame below the entry function: like a terminated
/// thread it runs no module code any more, so the frames above are dropped and not unwound.
class KRX_API Thread {
  public:
    Thread() = default;
    Thread(const Thread&) = delete;
    Thread& operator=(const Thread&) = delete;
    /// Derived destructors stop the thread first.
    virtual ~Thread() = default;

    /// The calling thread, or null on a host thread.
    static Thread* current();

    /// Starts once; false when the thread was started before or cannot be had.
    bool start(const std::string& name, int priority, KRXThreadEntry entry, void* argument);
    /// Blocks the calling thread, which must be this one. Does not return when the thread was stopped.
    void sleep(std::chrono::milliseconds time);

    /// Whether the thread was started and has not ended.
    virtual bool isActive() const = 0;
    /// Waits at most `time`; true when the thread does not run (any more).
    virtual bool waitForEnd(std::chrono::milliseconds time) = 0;
    /// Ends the thread for good before it returns. Not for the calling thread itself.
    virtual void stop() = 0;

    const std::string& name() const { return name_; }
    int priority() const { return priority_; }
    /// Whether the entry function returned, and what. To be asked of a thread that has ended.
    bool completed() const { return completed_; }
    int result() const { return result_; }

  protected:
    /// Makes the system thread that calls `run`; false when that fails.
    virtual bool launch() = 0;
    /// Blocks the calling thread; true when it is to leave.
    virtual bool sleepOrStop(std::chrono::milliseconds time) = 0;
    /// Runs the entry function to its end or to the sleep at which the thread was stopped.
    void run();

  private:
    std::string name_;
    int priority_ = 0;
    KRXThreadEntry entry_ = nullptr;
    void* argument_ = nullptr;
    bool completed_ = false;
    int result_ = 0;
    std::jmp_buf wayOut_ = {};
};

}  // namespace agent
