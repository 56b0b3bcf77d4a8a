#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <thread>

namespace platform {

/// While one lives, its thread does not wait for who reads standard output: what it echoes and nobody takes at once is
/// left to the next thread that writes, or to its own next text that is taken. Of each kind for one thread at a time,
/// the latest, since a thread may end without giving it back. Not a thread-local flag: for that the system ends the
/// process when it has no memory.
class EchoWithoutWait final {
  public:
    enum class Kind : std::size_t { PollingThread, Stop };

    explicit EchoWithoutWait(Kind kind) noexcept : thread_(threads_[static_cast<std::size_t>(kind)]) {
        thread_ = std::this_thread::get_id();
    }
    EchoWithoutWait(const EchoWithoutWait&) = delete;
    EchoWithoutWait& operator=(const EchoWithoutWait&) = delete;
    ~EchoWithoutWait() {
        std::thread::id own = std::this_thread::get_id();
        thread_.compare_exchange_strong(own, std::thread::id());
    }

    /// Whether the calling thread has one.
    static bool isActive() noexcept {
        const std::thread::id own = std::this_thread::get_id();
        return threads_[0] == own || threads_[1] == own;
    }

  private:
    static inline std::array<std::atomic<std::thread::id>, 2> threads_{};
    std::atomic<std::thread::id>& thread_;
};

}  // namespace platform
