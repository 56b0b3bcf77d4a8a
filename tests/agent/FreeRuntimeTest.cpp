// Threads as they run without a host program's own runtime.
#include "lib/AgentHost.h"
#include "lib/Observer.h"
#include "platform/agent/Threads.h"

#include <atomic>
#include <string>
#include <thread>

#include <gtest/gtest.h>
#include <pthread.h>

namespace agent {
namespace {

constexpr unsigned int kLong = 3'600'000;  // milliseconds

/// What a thread did, and when it stands at its sleep.
struct Probe final : Observer {
    void onSleep(unsigned int /*milliseconds*/) override { sleeping = true; }
    void onThreadEnd(int result) override { ended = result; }
    void onThreadDestroyed(const std::string& name) override { destroyed = name; }

    std::atomic<bool> sleeping = false;
    std::atomic<bool> wentOn = false;
    std::atomic<int> ended = -1;
    std::string destroyed;
    char systemName[16] = {};
    int priority = 0;
};

int answer(void* argument) {
    auto& probe = *static_cast<Probe*>(argument);
    pthread_getname_np(pthread_self(), probe.systemName, sizeof probe.systemName);
    probe.priority = KRXThreadGetPriority(KRXThreadGetHandleSelf());
    KRXThreadSleep(1);
    return 42;
}

int sleepLong(void* argument) {
    struct Unwinding {
        Probe& probe;
        ~Unwinding() { probe.wentOn = true; }
    } const unwinding{*static_cast<Probe*>(argument)};
    KRXThreadSleep(kLong);
    return 0;
}

TEST(FreeRuntime, RunsToTheEnd) {
    Probe probe;
    const AgentHost host({&probe, nullptr, nullptr});
    KRXThread thread;
    ASSERT_EQ(KRXThreadConstruct(&thread), 0);
    EXPECT_EQ(KRXThreadIsActive(&thread), 0);
    const int priority = KRXThreadGetPriority(KRXThreadGetHandleSelf()) + 2;
    ASSERT_EQ(KRXThreadStart(&thread, "A name beyond 15", priority, 0, 4096, answer, &probe), 0);
    EXPECT_EQ(KRXThreadStart(&thread, "again", 0, 0, 4096, answer, &probe), -1);
    int result = 0;
    EXPECT_EQ(KRXWaitForThread(&thread, &result, kLong), 0);
    EXPECT_EQ(result, 42);
    EXPECT_EQ(KRXThreadIsActive(&thread), 0);
    KRXThreadDestroy(&thread);
    EXPECT_EQ(thread.state, nullptr);
    EXPECT_STREQ(probe.systemName, "A name beyond 1");
    EXPECT_EQ(probe.priority, priority);
    EXPECT_EQ(probe.ended, 42);
    EXPECT_EQ(probe.destroyed, "");
}

TEST(FreeRuntime, DestroyRightAfterStart) {
    for (int i = 0; i < 50; ++i) {
        Probe probe;
        const AgentHost host({&probe, nullptr, nullptr});
        KRXThread thread;
        ASSERT_EQ(KRXThreadConstruct(&thread), 0);
        ASSERT_EQ(KRXThreadStart(&thread, "A", 0, 0, 4096, sleepLong, &probe), 0);
        KRXThreadDestroy(&thread);
        EXPECT_EQ(probe.destroyed, "A");
        EXPECT_FALSE(probe.wentOn);
    }
}

TEST(FreeRuntime, UnusableObjects) {
    KRXThread thread;
    EXPECT_EQ(KRXThreadConstruct(nullptr), -1);
    EXPECT_EQ(KRXThreadStart(&thread, "A", 0, 0, 4096, answer, nullptr), -1);
    EXPECT_EQ(KRXThreadIsActive(&thread), 0);
    EXPECT_EQ(KRXWaitForThread(&thread, nullptr, 0), -1);
    KRXThreadDestroy(&thread);
    ASSERT_EQ(KRXThreadConstruct(&thread), 0);
    EXPECT_EQ(KRXThreadStart(&thread, nullptr, 0, 0, 4096, nullptr, nullptr), -1);
    KRXThreadDestroy(&thread);
}

}  // namespace
}  // namespace agent
