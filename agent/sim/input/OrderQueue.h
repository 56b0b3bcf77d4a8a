// What clients want done, on its way to the host's thread.
#pragma once

#include "sim/input/Bell.h"
#include "sim/trace/Event.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <future>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace sim {

/// Lines as they could be typed. Any thread hands them in; the host's thread performs them, so that an order
/// from a client is no different from a typed one.
class OrderQueue final {
  public:
    struct Outcome {
        std::string error;         ///< why a line could not be performed; those behind it were not tried
        std::vector<Event> calls;  ///< of the module, that the lines made
        bool isOver = false;       ///< the session has ended, nothing was performed
    };

    OrderQueue() = default;
    OrderQueue(const OrderQueue&) = delete;
    OrderQueue& operator=(const OrderQueue&) = delete;

    /// Rings while an order waits.
    const Bell& bell() const { return bell_; }

    /// Rings `answered` when the outcome is there; it must outlive the queue.
    std::shared_future<Outcome> submit(std::vector<std::string> lines, Bell& answered);
    /// Orders that wait, and later ones, are not performed any more.
    void close();

    // For the host's thread.

    bool hasOrder() const;
    /// Performs the order that waits longest; `performLine` throws std::runtime_error when it cannot.
    void perform(const std::function<void(const std::string&)>& performLine);
    void onEvent(const Event& event) noexcept;

  private:
    struct Order {
        std::vector<std::string> lines;
        std::promise<Outcome> outcome = {};
        Bell* answered = nullptr;

        void answer(Outcome found);
    };

    Bell bell_;
    mutable std::mutex mutex_;  ///< guards the two below
    std::deque<Order> orders_;
    bool closed_ = false;
    std::vector<Event> calls_;  ///< of the order that is being performed
};

}  // namespace sim
