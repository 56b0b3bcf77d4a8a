// The threads that serve clients.
#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <httplib.h>
#include <mutex>
#include <thread>
#include <vector>

namespace sim {

/// One thread a client, so that none waits for another one; made when they are needed. When there are as many
/// as there may be, clients wait for one to be free.
class ClientThreads final : public httplib::TaskQueue {
  public:
    explicit ClientThreads(std::size_t most) : most_(most) {}

    void enqueue(std::function<void()> client) override;
    void shutdown() override;

  private:
    void serve();

    std::size_t most_;
    std::mutex mutex_;  ///< of everything below
    std::condition_variable changed_;
    std::deque<std::function<void()>> waiting_;
    std::vector<std::thread> threads_;
    std::size_t idle_ = 0;
    bool over_ = false;
};

}  // namespace sim
