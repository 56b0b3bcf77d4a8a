// The life of the one force-polling thread.
//
//   None      no thread object is held
//   Running   started, and not yet past its last look at the RSM state
//   Leaving   past that look: an order given now would be missed, so it gets a thread of its own
//   Ended     its entry function is about to return; the object stays until the next start or the stop
//
// The thread object is counted: whoever asks the agent about it keeps it, and it is destroyed once, by its
// last holder. The thread itself holds nothing over a sleep and nothing of this class at all: it is known by
// a number, and at each look it asks whether the controller still has that number. So the agent may stop it
// in its sleep, end it wherever it is, unwind it, or let it run on after a stop.
#pragma once

#include "platform/Mutex.h"
#include "platform/agent/Threads.h"

#include <cstdint>
#include <functional>
#include <memory>

class PollingThread final {
  public:
    /// A thread's number; 0 is none. Numbers are never used again in this process.
    using Number = std::uint64_t;

    PollingThread() = default;
    PollingThread(const PollingThread&) = delete;
    PollingThread& operator=(const PollingThread&) = delete;

    /// 0, or the system's error code when a mutex could not be created: then no thread can be had.
    int creationError() const noexcept;

    // ---- For orders, on any thread

    /// Starts `entry(argument)` on a thread unless there is one that will still see the caller's order; in
    /// that case `alreadyThere` is called. One caller at a time, as long as `alreadyThere` takes. 0, or -1
    /// with a log line.
    std::int8_t createThread(KRXThreadEntry entry, void* argument, const std::function<void()>& alreadyThere);
    /// Releases the object of a thread that no longer runs.
    void releaseFinished();
    /// A thread object is held, be it of a finished thread or of one that is just being started.
    bool isHeld() const;
    /// A thread is there that will still see an order given before this call.
    bool seesOrders() const;

    // ---- For the stop

    /// Starts no thread any more, waits at most 3000 ms for the one there is, and drops it. Never waits for a
    /// caller of `createThread`: a thread that is being started meanwhile is ended by its starter.
    void stop();
    /// `stop` was called.
    bool isClosing() const;

    // ---- For the thread itself

    /// The number of the thread that has just begun with this argument, to be asked for once by each; 0 when
    /// none was to.
    static Number enter(const void* argument);
    /// The thread of this number was not dropped.
    bool has(Number number) const;
    /// Phases of the thread of this number; of one that was dropped they change nothing.
    void setLeaving(Number number);
    void setEnded(Number number);

  private:
    enum class Phase { None, Running, Leaving, Ended };
    struct Object;
    struct Start;
    using Held = std::shared_ptr<Object>;

    /// One caller at a time: false when there is a thread, or a start is under way, in which this
    /// order came up.
    bool beginStart();
    void endStart();
    /// -1 with `refusedThread`: a stop began meanwhile, and the caller ends that thread.
    std::int8_t generateThread(KRXThreadEntry entry, void* argument, Held& refusedThread);
    void replaceLeaving();
    Held held() const;
    /// Forgets `object` unless another one is held by now.
    void forget(const Held& object);
    void forget(Number number);
    /// Of a start that its thread has not come to the end of.
    void forgetStart();

    /// Serialises check and create. Held while the agent starts a thread and while `alreadyThere` runs.
    platform::Mutex threadMutex_;
    /// Of the members below; nothing is called under it.
    mutable platform::Mutex lock_;
    Held object_;
    Phase phase_ = Phase::None;
    Number number_ = 0;  ///< of the thread that may still look; 0 once it was dropped
    bool starting_ = false;
    bool closing_ = false;
};
