// Threads that take turns on a simulation's clock.
#pragma once

#include "Clock.h"
#include "Runtime.h"

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <list>
#include <mutex>
#include <string>
#include <vector>

namespace sim {

class ScheduledThread;

/// Makes real threads of which only one runs at a time: the one that holds the turn. It gives the turn on
/// when it sleeps, waits or ends, so a run depends on nothing but the clock. Threads that can run take turns
/// in order; time moves only when none can. The thread that creates the scheduler is the host thread and
/// holds the first turn. All calls, also of the threads' operations, are made by the thread that holds the
/// turn.
class Scheduler final : public agent::Runtime {
  public:
    enum class Wake { due, noThreads, interrupted };

    explicit Scheduler(Clock& clock) : clock_(clock) {}
    Scheduler(const Scheduler&) = delete;
    Scheduler& operator=(const Scheduler&) = delete;
    /// Ends all threads. Their owners may still release them.
    ~Scheduler() override;

    std::unique_ptr<agent::Thread> construct() override;
    void sleepHost(std::chrono::milliseconds time) override;

    /// The host thread has nothing to do until `due`: the others run until none can, and what is due at that
    /// instant comes after the host. Comes back early when the clock was interrupted or, if `untilNoThreads`,
    /// when no thread is active any more.
    Wake idle(Instant due, bool untilNoThreads);

    /// Lets the next `construct` give nothing, or the next thread refuse to start.
    void failNextConstruct() { failConstruct_ = true; }
    void failNextStart() { failStart_ = true; }

    /// Ends every active thread: their names, in the order of their starts.
    std::vector<std::string> stopAll();
    /// Releases the threads whose owner is gone.
    void releaseAll();

  private:
    friend class ScheduledThread;

    /// Who goes first of those that are due at the same instant.
    enum class Rank : std::uint8_t { idleHost, thread, waitingHost };

    /// One who takes turns: a thread, or the host.
    struct Party {
        explicit Party(Rank atSameInstant) : rank(atSameInstant) {}

        std::condition_variable turn;
        Instant due{0};
        Rank rank;
        const Party* awaited = nullptr;  ///< whose end makes this one go on before it is due
        bool active = false;
        bool stopped = false;
    };

    bool begin(ScheduledThread& thread);
    void body(ScheduledThread& thread);
    void stop(ScheduledThread& thread);
    /// Blocks the calling party until `due` or the end of `awaited`.
    void block(std::unique_lock<std::mutex>& lock, Party& self, Instant due, const Party* awaited);
    Party& caller();
    /// Gives the turn to whoever is next.
    void passTurn();
    Party* earliest() const;
    Instant after(std::chrono::milliseconds time) const { return clock_.now() + time; }

    Clock& clock_;
    std::mutex mutex_;  ///< of the turn; who holds the turn reads everything else without it
    Party host_{Rank::waitingHost};
    Party* holder_ = &host_;
    std::deque<Party*> ready_;
    std::vector<Party*> blocked_;  ///< in the order in which they began to wait
    bool idleUntilNoThreads_ = false;
    bool interrupted_ = false;
    int activeThreads_ = 0;
    std::list<ScheduledThread*> threads_;
    bool failConstruct_ = false;
    bool failStart_ = false;
};

}  // namespace sim
