#pragma once

#include "platform/Mutex.h"

#include <atomic>
#include <thread>

namespace platform {

/// What one thread at a time does and nobody waits for: it is only tried for. Who has it is refused like all
/// others. One whose holder ended is free.
class Role final {
  public:
    Role() = default;
    Role(const Role&) = delete;
    Role& operator=(const Role&) = delete;

    /// 0, or the system's error code when it could not be created: then nobody gets it.
    int creationError() const noexcept { return mutex_.creationError(); }

    bool tryTake() noexcept {
        std::thread::id before = holder_;
        Mutex::Wait outcome = mutex_.tryWait();
        if (outcome == Mutex::Wait::Abandoned) {
            holder_.compare_exchange_strong(before,
                                            std::thread::id());  // it has ended, and its id may come again
            outcome = mutex_.tryWait();
        }
        if (outcome != Mutex::Wait::Obtained) {
            return false;
        }
        if (holder_ == std::this_thread::get_id()) {
            mutex_.release();
            return false;
        }
        holder_ = std::this_thread::get_id();
        return true;
    }
    /// The calling thread has it, and not one that ended and whose id has come again.
    bool isMine() noexcept {
        if (holder_ != std::this_thread::get_id()) {
            return false;
        }
        const Mutex::Wait outcome = mutex_.tryWait();
        if (outcome == Mutex::Wait::Abandoned) {
            holder_ = std::thread::id();
        }
        return outcome == Mutex::Wait::Obtained && mutex_.release();
    }
    void giveBack() noexcept {
        holder_ = std::thread::id();
        mutex_.release();
    }

  private:
    Mutex mutex_;
    std::atomic<std::thread::id> holder_{};
};

}  // namespace platform
