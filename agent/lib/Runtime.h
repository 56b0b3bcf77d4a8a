// Where the threads of the agent's library come from and how they pass time.
#pragma once

#include "lib/Settings.h"
#include "lib/Thread.h"

#include <chrono>
#include <functional>
#include <list>
#include <memory>

namespace agent {

/// Makes threads, owns them, and lets the threads of the process wait: its own and the host's.
class KRX_API Runtime {
  public:
    using Condition = std::function<bool()>;

    Runtime() = default;
    Runtime(const Runtime&) = delete;
    Runtime& operator=(const Runtime&) = delete;
    /// No thread may be active. Those that a thread object of the module still stands for stay for ever,
    /// since it may be destroyed later.
    virtual ~Runtime();

    /// A thread that can be started, or null when none is available.
    virtual Thread* construct(Thread::Kind kind) = 0;
    /// Starts a prepared thread; false when it is not available.
    virtual bool start(Thread& thread) = 0;
    /// Ends an active thread in this way; waits for it a moment at most. A thread that names itself runs on.
    virtual void end(Thread& thread, ThreadDestroy how) = 0;
    /// The thread is not used from outside any more; its object goes when it has ended.
    virtual void release(Thread& thread) = 0;
    /// Ends all threads but the calling one in their calls of the agent, and those of the module that come
    /// into one. False when some of them do not come.
    virtual bool endAll() = 0;

    /// Blocks the calling thread until `until` holds or for `time`. Conditions are looked at on any thread,
    /// one at a time.
    virtual void wait(std::chrono::milliseconds time, const Condition& until) = 0;
    /// Makes a change on which a condition may depend.
    virtual void change(const std::function<void()>& change) = 0;

  protected:
    Thread* add(std::unique_ptr<Thread> thread);
    /// Takes out those that are over; releasing one waits until the system's thread has gone.
    std::list<std::unique_ptr<Thread>> takeOver();
    const std::list<std::unique_ptr<Thread>>& threads() const { return threads_; }

  private:
    std::list<std::unique_ptr<Thread>> threads_;
};

}  // namespace agent
