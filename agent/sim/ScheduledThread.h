// A module thread that takes turns.
#pragma once

#include "Scheduler.h"
#include "Thread.h"

#include <thread>

namespace sim {

class ScheduledThread final : public agent::Thread {
  public:
    explicit ScheduledThread(Scheduler* scheduler) : scheduler_(scheduler) {
        scheduler->threads_.push_back(this);
    }
    ~ScheduledThread() override {
        stop();
        if (scheduler_ != nullptr) {
            scheduler_->threads_.remove(this);
        }
    }

    bool isActive() const override { return party_.active; }
    bool waitForEnd(std::chrono::milliseconds time) override;
    void stop() override {
        if (scheduler_ != nullptr) {
            scheduler_->stop(*this);
        }
    }

  private:
    friend class Scheduler;

    bool launch() override { return scheduler_ != nullptr && scheduler_->begin(*this); }
    bool sleepOrStop(std::chrono::milliseconds time) override;

    Scheduler* scheduler_;  ///< null when it is gone, which leaves no thread running
    Scheduler::Party party_{Scheduler::Rank::thread};
    std::thread thread_;
};

}  // namespace sim
