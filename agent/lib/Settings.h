// How the agent behaves towards the module; a host sets it through `AgentHost`.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>

namespace agent {

/// What `KRXThreadDestroy` does to a thread that still runs. It waits for it for a moment at most.
enum class ThreadDestroy : std::uint8_t {
    sleep,  ///< stops it for good at its sleep, or the next one if it does not sleep; its frames are dropped
    anywhere,  ///< ends it in the call of the agent in which it is, at the next one if it is in none; its
               ///< frames are dropped, and robust mutexes that it holds are left without an owner
    unwind,    ///< pthread_cancel
    leave      ///< lets it run on
};

struct Settings {
    std::atomic<std::chrono::milliseconds> pollDelay;        ///< what a poll takes
    std::atomic<std::chrono::milliseconds> enterpriseDelay;  ///< what the answer to a record takes
    std::atomic<bool> linkThread;                            ///< records go through a link thread
    std::atomic<bool> logLock;  ///< log lines are formatted and hooked one at a time
    std::atomic<bool> routing;  ///< log lines go to the log hook
    std::atomic<ThreadDestroy> threadDestroy;

    Settings() { reset(); }
    /// As they are at first.
    void reset() {
        pollDelay = enterpriseDelay = std::chrono::milliseconds(0);
        linkThread = logLock = false;
        routing = true;
        threadDestroy = ThreadDestroy::sleep;
    }
};

}  // namespace agent
