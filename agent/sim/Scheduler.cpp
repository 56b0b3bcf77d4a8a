#include "Scheduler.h"

#include "ScheduledThread.h"

#include <algorithm>
#include <system_error>
#include <utility>

namespace sim {

Scheduler::~Scheduler() {
    stopAll();
    for (ScheduledThread* thread : threads_) {
        thread->scheduler_ = nullptr;
    }
}

std::unique_ptr<agent::Thread> Scheduler::construct() {
    return std::exchange(failConstruct_, false) ? nullptr : std::make_unique<ScheduledThread>(this);
}

void Scheduler::sleepHost(std::chrono::milliseconds time) {
    std::unique_lock lock(mutex_);
    block(lock, host_, after(time), nullptr);
}

Scheduler::Wake Scheduler::idle(Instant due, bool untilNoThreads) {
    std::unique_lock lock(mutex_);
    host_.rank = Rank::idleHost;
    idleUntilNoThreads_ = untilNoThreads;
    interrupted_ = false;
    block(lock, host_, std::max(due, clock_.now()), nullptr);
    host_.rank = Rank::waitingHost;
    if (interrupted_) {
        return Wake::interrupted;
    }
    return untilNoThreads && activeThreads_ == 0 ? Wake::noThreads : Wake::due;
}

std::vector<std::string> Scheduler::stopAll() {
    std::vector<std::string> names;
    for (ScheduledThread* thread : threads_) {
        thread->party_.stopped = true;  // None of them may run while another one is being ended.
    }
    for (ScheduledThread* thread : threads_) {
        if (thread->isActive()) {
            names.push_back(thread->name());
        }
        thread->stop();
    }
    return names;
}

void Scheduler::releaseAll() {
    while (!threads_.empty()) {
        delete threads_.front();
    }
}

bool Scheduler::begin(ScheduledThread& thread) {
    if (std::exchange(failStart_, false)) {
        return false;
    }
    try {
        thread.thread_ = std::thread(&Scheduler::body, this, std::ref(thread));
    } catch (const std::system_error&) {
        return false;
    }
    thread.party_.active = true;
    ++activeThreads_;
    ready_.push_back(&thread.party_);
    return true;
}

void Scheduler::body(ScheduledThread& thread) {
    Party& self = thread.party_;
    {
        std::unique_lock lock(mutex_);
        self.turn.wait(lock, [&] { return holder_ == &self; });
    }
    if (!self.stopped) {
        thread.run();
    }
    const std::lock_guard lock(mutex_);
    self.active = false;
    --activeThreads_;
    const auto firstWaiting = std::stable_partition(
        blocked_.begin(), blocked_.end(), [&](const Party* party) { return party->awaited != &self; });
    ready_.insert(ready_.begin(), firstWaiting, blocked_.end());
    blocked_.erase(firstWaiting, blocked_.end());
    passTurn();
}

void Scheduler::stop(ScheduledThread& thread) {
    Party& party = thread.party_;
    party.stopped = true;
    if (party.active) {
        std::unique_lock lock(mutex_);
        std::erase(blocked_, &party);
        std::erase(ready_, &party);
        ready_.push_front(&party);
        block(lock, caller(), kNever, &party);
    }
    if (thread.thread_.joinable()) {
        thread.thread_.join();
    }
}

void Scheduler::block(std::unique_lock<std::mutex>& lock, Party& self, Instant due, const Party* awaited) {
    self.due = due;
    self.awaited = awaited;
    blocked_.push_back(&self);
    passTurn();
    self.turn.wait(lock, [&] { return holder_ == &self; });
}

Scheduler::Party& Scheduler::caller() {
    auto* self = static_cast<ScheduledThread*>(agent::Thread::current());
    return self == nullptr ? host_ : self->party_;
}

void Scheduler::passTurn() {
    const bool hostIdles = host_.rank == Rank::idleHost;
    Party* next = nullptr;
    if (!ready_.empty()) {
        next = ready_.front();
        ready_.pop_front();
    } else if (hostIdles && idleUntilNoThreads_ && activeThreads_ == 0) {
        next = &host_;
    } else {
        next = earliest();
        if (next->due > clock_.now() && !clock_.advance(next->due, hostIdles)) {
            interrupted_ = true;
            next = &host_;
        }
    }
    std::erase(blocked_, next);
    next->awaited = nullptr;
    if (holder_ != next) {
        holder_ = next;
        next->turn.notify_one();
    }
}

Scheduler::Party* Scheduler::earliest() const {
    return *std::min_element(blocked_.begin(), blocked_.end(), [](const Party* left, const Party* right) {
        return std::pair(left->due, left->rank) < std::pair(right->due, right->rank);
    });
}

bool ScheduledThread::waitForEnd(std::chrono::milliseconds time) {
    if (isActive()) {
        std::unique_lock lock(scheduler_->mutex_);
        scheduler_->block(lock, scheduler_->caller(), scheduler_->after(time), &party_);
    }
    return !isActive();
}

bool ScheduledThread::sleepOrStop(std::chrono::milliseconds time) {
    if (!party_.stopped) {
        std::unique_lock lock(scheduler_->mutex_);
        scheduler_->block(lock, party_, scheduler_->after(time), nullptr);
    }
    return party_.stopped;
}

}  // namespace sim
