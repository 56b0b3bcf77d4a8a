#pragma once

#include "platform/Mutex.h"

#include <atomic>
#include <thread>

namespace platform {

/// Something that one thread at a time does and no thread waits for: it is taken if it is free. The thread
/// that has it is refused like the others. It is free again when that thread has ended.
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
            // It has ended, and a new thread may get its id.
            holder_.compare_exchange_strong(before, std::thread::id());
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
    /// Whether the calling thread has it; an ended thread of the same id does not count.
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
