// Threads that take turns on a simulation's clock.
#pragma once

#include "lib/Runtime.h"
#include "sim/time/Clock.h"

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace sim {

/// Makes real threads of which only one runs at a time: the one that holds the turn. It gives the turn on
/// when it sleeps, waits or ends, so a run depends on nothing but the clock. Threads that can run take
/// turns in order; time moves only when none can. The thread that creates the scheduler is the host
/// thread and holds the first turn. All calls, also of the threads' operations, are made by the thread
/// that holds the turn.
///
/// When nobody can ever run again, or the one that holds the turn stays in the module, the module hangs.
class Scheduler final : public agent::Runtime {
  public:
    enum class Wake { due, noThreads, interrupted };
    /// Is told who waits where, on any thread, and must not return: nothing goes on any more.
    using HangHandler = std::function<void(const std::string& whoWaitsWhere)>;

    /// Chooses who goes on of those that can, by its place among them. When `mayStay`, the first of them holds
    /// the turn; otherwise that one waits or has ended.
    using Choice = std::function<std::size_t(const std::vector<const agent::Thread*>& able, bool mayStay)>;

    /// `patience`: how long the clock may stand still in real time while the module runs and no program that
    /// it started does.
    Scheduler(Clock& clock, HangHandler onHang, std::chrono::milliseconds patience);
    /// Waits for ever for a module that hangs.
    explicit Scheduler(Clock& clock) : Scheduler(clock, {}, {}) {}
    Scheduler(const Scheduler&) = delete;
    Scheduler& operator=(const Scheduler&) = delete;
    /// Ends all threads. Their objects may still be destroyed.
    ~Scheduler() override;

    agent::Thread* construct(agent::Thread::Kind kind) override;
    bool start(agent::Thread& thread) override;
    void end(agent::Thread& thread, agent::ThreadDestroy how) override;
    void release(agent::Thread& thread) override;
    bool endAll() override;
    void wait(std::chrono::milliseconds time, const Condition& until) override;
    void change(const std::function<void()>& change) override;

    /// The host thread has nothing to do until `due`: the others run until none can, and what is due at that
    /// instant comes after the host. Comes back early when the clock was interrupted or, if `untilNoThreads`,
    /// when no thread of the module is active any more.
    Wake idle(Instant due, bool untilNoThreads);

    /// Lets the next `construct` for the module give nothing, or its next thread refuse to start.
    void failNextConstruct() { failConstruct_ = true; }
    void failNextStart() { failStart_ = true; }

    /// From now on `choice` says who goes on whenever more than one can, the host, which comes last, not
    /// counted; null lets them take turns in order again.
    void letChoose(Choice choice) { choice_ = std::move(choice); }
    /// A point at which the calling thread may lose the turn though it could go on.
    void offerTurn();

    /// How many threads of the module are active.
    int activeThreads() const { return activeThreads_; }
    /// Ends the one that was started first, as an agent does that does not ask the module.
    void endThread(agent::ThreadDestroy how);
    std::string whoWaitsWhere() const;

    /// Ends every active thread: the names of the module's, in the order of their starts.
    std::vector<std::string> stopAll();
    /// Releases the threads of a module that is gone.
    void releaseAll();

  private:
    struct TakingTurns;

    /// Who goes first of those that are due at the same instant.
    enum class Rank : std::uint8_t { idleHost, thread, waitingHost };

    /// One who takes turns: a thread, or the host.
    struct Party {
        explicit Party(Rank atSameInstant) : rank(atSameInstant) {}

        std::condition_variable turn;
        Instant due{0};
        Rank rank;
        const agent::Thread* thread = nullptr;  ///< none of the host
        const Condition* until = nullptr;       ///< makes this one go on before it is due
        const agent::Whereabouts* whereabouts = nullptr;
    };

    void body(TakingTurns& thread);
    void end(TakingTurns& thread);
    /// Blocks the calling party until `due` or until `until` holds, which may be null.
    void block(std::unique_lock<std::mutex>& lock, Party& self, Instant due, const Condition* until);
    Party& caller();
    /// Lets those go on that need not wait any more.
    void wake();
    /// Gives the turn to the next thread.
    void passTurn(bool mayStay = false);
    void giveTurn(Party& next);
    void awaitTurn(std::unique_lock<std::mutex>& lock, Party& self);
    /// Chooses among those that can go on at this instant, if there are any.
    Party* choose(bool mayStay);
    Party* earliest() const;
    /// Whether nobody but the idle host can ever go on.
    bool allWaitForEver() const;
    Instant after(std::chrono::milliseconds time) const;
    void watch(std::chrono::milliseconds patience);

    Clock& clock_;
    std::mutex mutex_;  ///< guards the turn; the thread that has the turn reads everything else without it
    Party host_{Rank::waitingHost};
    Party* holder_ = &host_;
    std::deque<Party*> ready_;
    std::vector<Party*> blocked_;  ///< in the order in which they began to wait
    Choice choice_;
    agent::Thread* ended_ = nullptr;  ///< gave its last turn away; the system's thread may still be there
    bool idleUntilNoThreads_ = false;
    bool interrupted_ = false;
    int activeThreads_ = 0;  ///< of the module
    bool failConstruct_ = false;
    bool failStart_ = false;

    HangHandler onHang_;
    std::uint64_t progress_ = 0;  ///< counts moves of the clock and of the host
    bool watchEnds_ = false;
    std::condition_variable watchEnd_;
    std::thread watch_;
};

}  // namespace sim
