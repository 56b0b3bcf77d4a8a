#include "sim/input/OrderQueue.h"

#include <stdexcept>
#include <utility>

namespace sim {

namespace {

constexpr std::size_t kMostOrders = 1000;

}  // namespace

void OrderQueue::Order::answer(Outcome found) {
    outcome.set_value(std::move(found));
    answered->ring();
}

std::shared_future<OrderQueue::Outcome> OrderQueue::submit(std::vector<std::string> lines, Bell& answered) {
    Order order{std::move(lines), {}, &answered};
    std::shared_future<Outcome> outcome = order.outcome.get_future().share();
    const std::lock_guard lock(mutex_);
    if (closed_) {
        order.answer({{}, {}, true});
    } else if (orders_.size() >= kMostOrders) {
        order.answer({"too many orders wait already", {}, false});
    } else {
        orders_.push_back(std::move(order));
        bell_.ring();
    }
    return outcome;
}

void OrderQueue::close() {
    const std::lock_guard lock(mutex_);
    closed_ = true;
    for (Order& order : std::exchange(orders_, {})) {
        order.answer({{}, {}, true});
    }
}

bool OrderQueue::hasOrder() const {
    const std::lock_guard lock(mutex_);
    return !orders_.empty();
}

void OrderQueue::perform(const std::function<void(const std::string&)>& performLine) {
    Order order;
    {
        const std::lock_guard lock(mutex_);
        order = std::move(orders_.front());
        orders_.pop_front();
    }
    bell_.answer();
    calls_.clear();
    Outcome outcome;
    try {
        for (const std::string& line : order.lines) {
            performLine(line);
        }
    } catch (const std::runtime_error& error) {
        outcome.error = error.what();
    }
    outcome.calls = std::exchange(calls_, {});
    order.answer(std::move(outcome));
}

void OrderQueue::onEvent(const Event& event) noexcept {
    if (event.name == "call") {
        calls_.push_back(event);
    }
}

}  // namespace sim
