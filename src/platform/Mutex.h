#pragma once

#include "platform/portable/ThreadSafety.h"

#include <array>
#include <chrono>
#include <cstddef>

namespace platform {

/// An operating-system mutex that admits again the thread which holds it and tells when its previous owner
/// ended without releasing it. It takes no memory and no thread is ended in it. Any thread.
class CAPABILITY("mutex") Mutex final {
  public:
    enum class Wait {
        Obtained,
        Abandoned,  ///< the owner ended while holding it; the mutex is usable again and not held
        Busy,       ///< another thread holds it; of waits that have an end only
        Failed
    };

    Mutex() noexcept;
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;
    ~Mutex();

    /// 0, or the system's error code when the mutex could not be created. Such a mutex only answers `Failed`.
    int creationError() const noexcept { return creationError_; }

    /// Waits without time limit.
    Wait wait() noexcept;
    /// Waits so long at most; then `Busy`.
    Wait waitFor(std::chrono::milliseconds time) noexcept;
    /// Does not wait.
    Wait tryWait() noexcept;
    /// Gives the mutex back. False when the system refuses (the calling thread does not hold it).
    bool release() noexcept;

  private:
    static constexpr std::size_t kAlignment = 8;

    /// Of the system's own object. Not aligned as `max_align_t`: 32-bit MinGW has two of these, by the headers that came before.
    alignas(kAlignment) std::array<std::byte, 64> storage_{};
    int creationError_ = 0;
};

}  // namespace platform
