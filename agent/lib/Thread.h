// A thread of the agent's library, most often one that runs an entry function of the module.
#pragma once

#include "lib/Place.h"
#include "lib/Settings.h"
#include "platform/agent/Api.h"

#include <atomic>
#include <chrono>
#include <csetjmp>
#include <functional>
#include <string>
#include <thread>

namespace agent {

/// What was given to the start, what became of it, and the ways out of a thread that is ended before its
/// work is done. A thread leaves only from inside a call of the agent: straight to the frame below its work,
/// the frames above dropped and not unwound, as a terminated thread runs no module code any more; or unwound
/// by the system.
///
/// Its runtime owns it until it has ended and its thread object was destroyed.
class KRX_API Thread {
  public:
    enum class Kind : std::uint8_t {
        module,  ///< behind a thread object of the module
        agent    ///< the agent's own
    };
    using Work = std::function<int()>;

    static constexpr auto kForever = std::chrono::milliseconds::max();

    explicit Thread(Kind kind) : kind_(kind) {}
    Thread(const Thread&) = delete;
    Thread& operator=(const Thread&) = delete;
    /// As `join`.
    virtual ~Thread() { join(); }

    /// The calling thread, or null on a host thread.
    static Thread* current();
    /// Blocks the calling thread in a call of the agent until `until` holds, which is answered, or for
    /// `time`. Does not return when the thread is ended in the meantime. `asleep`: in a sleep that the
    /// module asked for.
    static bool block(std::chrono::milliseconds time, const std::function<bool()>& until,
                      bool asleep = false);

    /// What it will do; once. False when it has got something to do before, or nothing now.
    bool prepare(const std::string& name, int priority, Work work);

    Kind kind() const { return kind_; }
    const std::string& name() const { return name_; }
    int priority() const { return priority_; }
    /// Whether the thread was started and has not ended.
    bool isActive() const { return active_; }
    /// Whether its work was done to its end, and what that returned.
    bool completed() const { return completed_; }
    int result() const { return result_; }

    // For the runtimes, in their lock or turn.

    /// Makes the system's thread, which calls `body`; false when that fails.
    bool launch(std::function<void()> body);
    /// Does the work, unless the thread was ended before; comes back also when it is ended.
    void run();
    /// Waits until the system's thread has gone, too, of a thread that has ended.
    void join();
    void setEnded() { active_ = false; }
    /// Ends the thread where it may be ended; not for the calling thread.
    void cancel(ThreadDestroy how);
    /// Whether a cancelled thread runs nothing of its work any more, and ends as soon as it is woken.
    bool leavesNow() const;
    /// It is not used from outside any more.
    void disown() { owned_ = false; }
    bool isOwned() const { return owned_; }
    /// Whether nobody needs this object any more.
    bool isOver() const { return !active_ && !owned_; }

  private:
    friend class AgentCall;
    friend class ModuleCall;

    enum class Blocked : std::uint8_t { no, inAgent, asleep };

    bool mustLeave(bool asleep) const;
    void leaveIfCancelled(bool asleep);

    const Kind kind_;
    std::atomic<bool> owned_ = true;
    std::string name_;
    int priority_ = 0;
    Work work_;
    std::thread handle_;
    std::atomic<bool> active_ = false;
    std::atomic<bool> begun_ = false;
    std::atomic<bool> completed_ = false;
    int result_ = 0;
    std::atomic<ThreadDestroy> cancelled_ = ThreadDestroy::leave;
    std::atomic<Blocked> blocked_ = Blocked::no;
    std::atomic<bool> cancellable_ = true;  ///< the module has not disabled cancellation
    std::jmp_buf wayOut_ = {};
    const void* bottom_ = nullptr;  ///< of the stack, where the way out leads
};

/// The calling thread is in a function of the agent that the module called. What the function does of its own
/// cannot be cancelled; the module's setting comes back at the end.
class KRX_API AgentCall final {
  public:
    /// Does not return when the thread was ended. `asleep`: the function is the sleep of the module.
    explicit AgentCall(const char* function, bool asleep = false);
    AgentCall(const AgentCall&) = delete;
    AgentCall& operator=(const AgentCall&) = delete;
    ~AgentCall();

  private:
    Place place_;
    Thread* self_;
    bool unwindingAdmitted_ = false;
    bool cancellable_ = true;
};

/// The agent calls the module back, on the same thread.
class KRX_API ModuleCall final {
  public:
    explicit ModuleCall(const char* function);
    ModuleCall(const ModuleCall&) = delete;
    ModuleCall& operator=(const ModuleCall&) = delete;
    ~ModuleCall();

  private:
    Place place_;
    Thread* self_;
};

}  // namespace agent
