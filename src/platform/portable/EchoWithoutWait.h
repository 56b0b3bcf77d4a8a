#pragma once

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <thread>

namespace platform {

/// While one lives, its thread does not wait for a reader of standard output: an echo that is not taken at
/// once is left to the next thread that writes, or to its own next text that is taken. There is room for one
/// polling thread and a few stops at a time, and always for the latest, since a thread may end without giving
/// its place back. It is not a thread-local flag, because the system ends the process when it has no memory
/// for one.
class EchoWithoutWait final {
  public:
    enum class Kind { PollingThread, Stop };

    explicit EchoWithoutWait(Kind kind) noexcept : thread_(placeFor(kind)) {
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
        return std::any_of(threads_.begin(), threads_.end(),
                           [own](const auto& thread) { return thread == own; });
    }

  private:
    using Place = std::atomic<std::thread::id>;

    static Place& placeFor(Kind kind) noexcept {
        if (kind == Kind::PollingThread) {
            return threads_[0];
        }
        for (std::size_t i = 1; i < threads_.size(); ++i) {
            std::thread::id nobody;
            if (threads_[i].compare_exchange_strong(nobody, std::this_thread::get_id())) {
                return threads_[i];
            }
        }
        return threads_[1];
    }

    static inline std::array<Place, 5> threads_{};  ///< the first one is the polling thread's
    Place& thread_;
};

}  // namespace platform
