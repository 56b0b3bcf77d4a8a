// The default runtime: every thread runs as the system lets it.
#pragma once

#include "Runtime.h"

#include <condition_variable>
#include <mutex>

namespace agent {

class FreeRuntime final : public Runtime {
  public:
    Thread* construct(Thread::Kind kind) override;
    bool start(Thread& thread) override;
    void end(Thread& thread, ThreadDestroy how) override;
    void release(Thread& thread) override;
    bool endAll() override;
    void wait(std::chrono::milliseconds time, const Condition& until) override;
    void change(const std::function<void()>& change) override;

  private:
    std::mutex mutex_;
    std::condition_variable changed_;
};

}  // namespace agent
