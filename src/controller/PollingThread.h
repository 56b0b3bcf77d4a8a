// The life of the one force-polling thread.
//
//   none      no thread object is held
//   starting  the agent is asked to start it
//   running   started, and not yet past its last look at the RSM state
//   leaving   past that look: an order given now would be missed, so it gets a thread of its own
//
// The thread object is counted: whoever asks the agent about it keeps it, and it is destroyed once, by its
// last holder. The thread itself holds nothing over a sleep and nothing of this class at all: it is known by
// a number, and at each look it asks whether the controller still has that number. So the agent may stop it
// in its sleep, end it wherever it is, unwind it, or let it run on after a stop.
#pragma once

#include "platform/Mutex.h"
#include "platform/agent/Threads.h"

#include <cstdint>
#include <memory>

class PollingThread final {
  public:
    /// A thread's number; 0 is none. Numbers are never used again in this process.
    using Number = std::uint64_t;
    static constexpr char kName[] = "Data Polling";
    enum class Creation { Failed, Stopping, Started, AlreadyThere };

    /// `lock` guards what the threads share of RSM, this object's fields among it; it may be held by the
    /// caller where that is said.
    explicit PollingThread(platform::Mutex& lock) noexcept : lock_(lock) {}
    PollingThread(const PollingThread&) = delete;
    PollingThread& operator=(const PollingThread&) = delete;

    /// 0, or the system's error code when the mutex could not be created: then no thread can be started.
    int creationError() const noexcept { return threadMutex_.creationError(); }

    // ---- For orders, on any thread

    /// Starts `entry(argument)` on a thread unless there is one that will still see an order given before this
    /// call. One caller at a time. The lines go with it.
    Creation createThread(KRXThreadEntry entry, void* argument);
    /// Releases the object of a thread that no longer runs, and of one that leaves once it has left.
    void releaseFinished();
    /// A thread object is held, be it of a finished thread or of one that is just being started. Also with the
    /// lock held.
    bool isHeld() const;
    /// A thread is there that will still see an order given before this call. Also with the lock held.
    bool seesOrders() const;

    // ---- For the stop

    /// Starts no thread any more, waits at most 3000 ms for the one there is, and drops it. Never waits for a
    /// caller of `createThread`: a thread that is being started at that moment is ended by its starter.
    void stop();
    /// `stop` was called.
    bool isClosing() const;

    // ---- For the thread itself

    /// The number of the thread that has just begun, to be asked for once by each; 0 when none was to.
    static Number enter();
    /// The thread of this number was not dropped. Also with the lock held.
    bool has(Number number) const;
    /// The thread of this number has had its last look; of one that was dropped nothing changes. Also with the
    /// lock held.
    void setLeaving(Number number);

  private:
    struct Object;
    using Held = std::shared_ptr<Object>;

    /// `ended`: a stop has begun, and the caller ends that thread.
    Creation generateThread(KRXThreadEntry entry, void* argument, Held& ended);
    /// Of a start that its thread has not come to the end of.
    void forgetStart();
    /// Forgets `object` unless another one is held by now.
    void forget(const Held& object);

    /// Serialises check and create. Held while the agent starts a thread, or ends one that leaves.
    platform::Mutex threadMutex_;
    platform::Mutex& lock_;
    Held object_ GUARDED_BY(lock_);
    bool starting_ GUARDED_BY(lock_) = false;
    bool leaving_ GUARDED_BY(lock_) = false;
    bool closing_ GUARDED_BY(lock_) = false;
};
