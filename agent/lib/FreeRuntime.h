// The default runtime: every thread runs as the system lets it.
#pragma once

#include "lib/Runtime.h"

#include <condition_variable>
#include <mutex>

namespace agent {

class KRX_API FreeRuntime final : public Runtime {
  public:
    /// All times that module and host set pass `speed` times as fast; for tests of what takes seconds.
    explicit FreeRuntime(int speed = 1) : speed_(speed) {}
    Thread* construct(Thread::Kind kind) override;
    bool start(Thread& thread) override;
    void end(Thread& thread, ThreadDestroy how) override;
    void release(Thread& thread) override;
    bool endAll() override;
    void wait(std::chrono::milliseconds time, const Condition& until) override;
    void change(const std::function<void()>& change) override;

  private:
    const int speed_;
    std::mutex mutex_;
    std::condition_variable changed_;
};

}  // namespace agent
