#include "FreeRuntime.h"

#include "Thread.h"

#include <condition_variable>
#include <mutex>
#include <system_error>
#include <thread>

namespace agent {

namespace {

class FreeThread final : public Thread {
  public:
    ~FreeThread() override { stop(); }

    bool isActive() const override {
        const std::lock_guard lock(mutex_);
        return active_;
    }

    bool waitForEnd(std::chrono::milliseconds time) override {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, time, [this] { return !active_; });
    }

    void stop() override {
        {
            const std::lock_guard lock(mutex_);
            stopped_ = true;
        }
        changed_.notify_all();
        if (thread_.joinable()) {
            thread_.join();
        }
    }

  private:
    bool launch() override {
        active_ = true;
        try {
            thread_ = std::thread(&FreeThread::body, this);
            return true;  // it may have ended already
        } catch (const std::system_error&) {
            active_ = false;
            return false;
        }
    }

    bool sleepOrStop(std::chrono::milliseconds time) override {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, time, [this] { return stopped_; });
    }

    void body() {
        if (!isStopped()) {
            run();
        }
        const std::lock_guard lock(mutex_);
        active_ = false;
        changed_.notify_all();
    }

    bool isStopped() const {
        const std::lock_guard lock(mutex_);
        return stopped_;
    }

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    bool active_ = false;
    bool stopped_ = false;
    std::thread thread_;
};

}  // namespace

std::unique_ptr<Thread> FreeRuntime::construct() {
    return std::make_unique<FreeThread>();
}

void FreeRuntime::sleepHost(std::chrono::milliseconds time) {
    std::this_thread::sleep_for(time);
}

}  // namespace agent
