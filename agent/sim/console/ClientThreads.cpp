#include "console/ClientThreads.h"

#include <system_error>
#include <utility>

namespace sim {

void ClientThreads::enqueue(std::function<void()> client) {
    const std::lock_guard lock(mutex_);
    waiting_.push_back(std::move(client));
    if (idle_ < waiting_.size() && threads_.size() < most_) {
        try {
            threads_.emplace_back(&ClientThreads::serve, this);
        } catch (const std::system_error&) {
            // The system has no more threads: the client waits for one of those that are there.
        }
    }
    changed_.notify_one();
}

void ClientThreads::shutdown() {
    {
        const std::lock_guard lock(mutex_);
        over_ = true;
    }
    changed_.notify_all();
    for (std::thread& thread : threads_) {
        thread.join();
    }
}

void ClientThreads::serve() {
    std::unique_lock lock(mutex_);
    while (true) {
        ++idle_;
        changed_.wait(lock, [this] { return over_ || !waiting_.empty(); });
        --idle_;
        if (waiting_.empty()) {
            return;
        }
        const std::function<void()> client = std::move(waiting_.front());
        waiting_.pop_front();
        lock.unlock();
        client();
        lock.lock();
    }
}

}  // namespace sim
