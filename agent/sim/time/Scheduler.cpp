#include "sim/time/Scheduler.h"

#include "sim/System.h"
#include "sim/trace/Event.h"

#include <algorithm>
#include <utility>

namespace sim {

/// A thread that takes turns.
struct Scheduler::TakingTurns final : agent::Thread {
    explicit TakingTurns(Kind kind) : Thread(kind) { party.thread = this; }

    Party party{Rank::thread};
};

Scheduler::Scheduler(Clock& clock, HangHandler onHang, std::chrono::milliseconds patience)
    : clock_(clock), onHang_(std::move(onHang)) {
    host_.whereabouts = &agent::Place::here();
    if (onHang_) {
        watch_ = std::thread(&Scheduler::watch, this, patience);
    }
}

Scheduler::~Scheduler() {
    if (watch_.joinable()) {
        {
            const std::lock_guard lock(mutex_);
            watchEnds_ = true;
        }
        watchEnd_.notify_all();
        watch_.join();
    }
    stopAll();
}

agent::Thread* Scheduler::construct(agent::Thread::Kind kind) {
    takeOver().clear();
    if (kind == agent::Thread::Kind::module && std::exchange(failConstruct_, false)) {
        return nullptr;
    }
    return add(std::make_unique<TakingTurns>(kind));
}

bool Scheduler::start(agent::Thread& thread) {
    const bool isModules = thread.kind() == agent::Thread::Kind::module;
    auto& started = static_cast<TakingTurns&>(thread);
    if ((isModules && std::exchange(failStart_, false)) ||
        !thread.launch([this, &started] { body(started); })) {
        return false;
    }
    activeThreads_ += isModules ? 1 : 0;
    ready_.push_back(&started.party);
    return true;
}

void Scheduler::end(agent::Thread& thread, agent::ThreadDestroy how) {
    if (&thread != agent::Thread::current()) {
        thread.cancel(how);
        end(static_cast<TakingTurns&>(thread));
    }
}

void Scheduler::release(agent::Thread& thread) {
    thread.disown();
    takeOver().clear();
}

bool Scheduler::endAll() {
    stopAll();
    return true;
}

void Scheduler::wait(std::chrono::milliseconds time, const Condition& until) {
    if (!until()) {
        std::unique_lock lock(mutex_);
        block(lock, caller(), after(time), &until);
    }
}

void Scheduler::change(const std::function<void()>& change) {
    const std::lock_guard lock(mutex_);
    change();
    wake();
}

Scheduler::Wake Scheduler::idle(Instant due, bool untilNoThreads) {
    std::unique_lock lock(mutex_);
    host_.rank = Rank::idleHost;
    idleUntilNoThreads_ = untilNoThreads;
    interrupted_ = false;
    block(lock, host_, std::max(due, clock_.now()), nullptr);
    host_.rank = Rank::waitingHost;
    ++progress_;
    if (interrupted_) {
        return Wake::interrupted;
    }
    return untilNoThreads && activeThreads_ == 0 ? Wake::noThreads : Wake::due;
}

void Scheduler::offerTurn() {
    std::unique_lock lock(mutex_);
    if (choice_) {
        Party& self = caller();
        ready_.push_front(&self);
        passTurn(true);
        awaitTurn(lock, self);
    }
}

void Scheduler::endThread(agent::ThreadDestroy how) {
    const auto running = std::find_if(threads().begin(), threads().end(), [](const auto& thread) {
        return thread->isActive() && thread->kind() == agent::Thread::Kind::module;
    });
    if (running != threads().end()) {
        end(**running, how);
    }
}

std::vector<std::string> Scheduler::stopAll() {
    std::vector<std::string> names;
    for (const auto& thread : threads()) {
        if (thread->isActive()) {
            // None of them may run while another one is being ended.
            thread->cancel(agent::ThreadDestroy::anywhere);
            if (thread->kind() == agent::Thread::Kind::module) {
                names.push_back(thread->name());
            }
        }
    }
    for (const auto& thread : threads()) {
        if (thread->isActive()) {
            end(static_cast<TakingTurns&>(*thread));
        }
    }
    return names;
}

void Scheduler::releaseAll() {
    for (const auto& thread : threads()) {
        thread->disown();
    }
    takeOver().clear();
}

void Scheduler::body(TakingTurns& thread) {
    Party& self = thread.party;
    const struct End {
        Scheduler& scheduler;
        TakingTurns& thread;
        ~End() {  // also when the thread is unwound
            const std::lock_guard lock(scheduler.mutex_);
            thread.setEnded();
            scheduler.ended_ = &thread;
            scheduler.activeThreads_ -= thread.kind() == agent::Thread::Kind::module ? 1 : 0;
            scheduler.wake();
            scheduler.passTurn();
        }
    } end{*this, thread};
    {
        std::unique_lock lock(mutex_);
        self.whereabouts = &agent::Place::here();
        awaitTurn(lock, self);
    }
    thread.run();
}

/// Lets a cancelled thread end at once, if it can.
void Scheduler::end(TakingTurns& thread) {
    if (!thread.leavesNow()) {
        return;
    }
    Party& party = thread.party;
    Party& self = caller();
    std::unique_lock lock(mutex_);
    ready_.push_front(&self);  // goes on when that one has ended, or waits on its way out
    giveTurn(party);
    awaitTurn(lock, self);
}

void Scheduler::block(std::unique_lock<std::mutex>& lock, Party& self, Instant due, const Condition* until) {
    self.due = due;
    self.until = until;
    blocked_.push_back(&self);
    passTurn();
    awaitTurn(lock, self);
    self.until = nullptr;
}

Scheduler::Party& Scheduler::caller() {
    auto* self = static_cast<TakingTurns*>(agent::Thread::current());
    return self == nullptr ? host_ : self->party;
}

void Scheduler::wake() {
    const auto firstAwake = std::stable_partition(blocked_.begin(), blocked_.end(), [](const Party* party) {
        return party->until == nullptr || !(*party->until)();
    });
    ready_.insert(ready_.begin(), firstAwake, blocked_.end());
    blocked_.erase(firstAwake, blocked_.end());
}

void Scheduler::passTurn(bool mayStay) {
    const bool hostIdles = host_.rank == Rank::idleHost;
    Party* next = choice_ ? choose(mayStay) : nullptr;
    if (next != nullptr) {
        // chosen
    } else if (!ready_.empty()) {
        next = ready_.front();
    } else if (hostIdles && idleUntilNoThreads_ && activeThreads_ == 0) {
        next = &host_;
    } else {
        next = earliest();
        if (onHang_ && allWaitForEver()) {
            onHang_(whoWaitsWhere());
        }
        if (next->due > clock_.now()) {
            if (!clock_.advance(next->due, hostIdles)) {
                interrupted_ = true;
                next = &host_;
            }
            ++progress_;
            if (choice_ && next != &host_) {
                next = choose(false);
            }
        }
    }
    giveTurn(*next);
}

void Scheduler::giveTurn(Party& next) {
    std::erase(ready_, &next);
    std::erase(blocked_, &next);
    if (holder_ != &next) {
        holder_ = &next;
        next.turn.notify_one();
    }
}

void Scheduler::awaitTurn(std::unique_lock<std::mutex>& lock, Party& self) {
    self.turn.wait(lock, [&] { return holder_ == &self; });
    if (ended_ != nullptr) {
        std::exchange(ended_, nullptr)->join();  // With it a lock that it held is known to be left behind.
    }
}

Scheduler::Party* Scheduler::choose(bool mayStay) {
    std::vector<Party*> able;
    std::vector<const agent::Thread*> threads;
    const auto add = [&](Party* party) {
        if (party != &host_) {
            able.push_back(party);
            threads.push_back(party->thread);
        }
    };
    std::for_each(ready_.begin(), ready_.end(), add);
    for (Party* party : blocked_) {
        if (party->due <= clock_.now()) {
            add(party);
        }
    }
    return able.empty() ? nullptr : able.size() == 1 ? able.front() : able.at(choice_(threads, mayStay));
}

Scheduler::Party* Scheduler::earliest() const {
    return *std::min_element(blocked_.begin(), blocked_.end(), [](const Party* left, const Party* right) {
        return std::pair(left->due, left->rank) < std::pair(right->due, right->rank);
    });
}

bool Scheduler::allWaitForEver() const {
    const bool hostActs = host_.rank == Rank::idleHost && !idleUntilNoThreads_;
    return !hostActs && std::all_of(blocked_.begin(), blocked_.end(), [this](const Party* party) {
        return party->due == kNever || (party == &host_ && party->rank == Rank::idleHost);
    });
}

Instant Scheduler::after(std::chrono::milliseconds time) const {
    return time == agent::Thread::kForever ? kNever : clock_.now() + time;
}

std::string Scheduler::whoWaitsWhere() const {
    std::string text;
    const auto add = [&](const std::string& name, const Party& party) {
        text += (text.empty() ? "" : "; ") + name +
                (party.whereabouts == nullptr ? " waits to begin"
                                              : " waits in " + agent::Place::describe(*party.whereabouts));
        if (holder_ != &party && party.due != kNever) {
            text += " until " + secondsText(party.due);
        }
    };
    if (host_.rank != Rank::idleHost) {
        add("host", host_);
    }
    for (const auto& thread : threads()) {
        if (thread->isActive()) {
            add(thread->name(), static_cast<const TakingTurns&>(*thread).party);
        }
    }
    std::replace(text.begin(), text.end(), '\n', ' ');  // in the words of a verb
    return text;
}

void Scheduler::watch(std::chrono::milliseconds patience) {
    const std::chrono::milliseconds step =
        std::clamp(patience / 10, std::chrono::milliseconds(1), std::chrono::milliseconds(100));
    std::chrono::milliseconds stuck(0);
    std::uint64_t seenProgress = 0;
    std::uint64_t seenMoves = 0;
    std::unique_lock lock(mutex_);
    while (!watchEnd_.wait_for(lock, step, [this] { return watchEnds_; })) {
        const agent::Whereabouts* holder = holder_->whereabouts;
        const std::uint64_t moves = holder == nullptr ? 0 : holder->moves.load();
        if (std::exchange(seenProgress, progress_) != progress_) {
            stuck = {};
        } else if (holder != nullptr && (agent::Place::isInModule(*holder) || moves != seenMoves) &&
                   !system::childRuns()) {
            stuck += step;  // Where the simulator itself is held up, by the reader of its trace, it waits.
        }
        seenMoves = moves;
        if (stuck >= patience) {
            onHang_(whoWaitsWhere());
        }
    }
}

}  // namespace sim
