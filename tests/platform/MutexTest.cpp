// Mutexes whose owners come and go.
#include "platform/Mutex.h"
#include "platform/portable/Lock.h"

#include <chrono>
#include <thread>

#include <gtest/gtest.h>

namespace {

using platform::Mutex;
using Wait = platform::Mutex::Wait;

/// What another thread does, to its end.
template <typename Function>
void elsewhere(Function&& function) {
    std::thread(function).join();
}

/// Gives back what the calling thread does not hold.
bool releaseNothing(Mutex& mutex) {
#if defined(__SANITIZE_THREAD__)  // takes the attempt itself for a fault
    static_cast<void>(mutex);
    return false;
#else
    return mutex.release();
#endif
}

TEST(Mutex, AdmitsItsOwnerAgainAndNobodyElse) {
    Mutex mutex;
    EXPECT_FALSE(releaseNothing(mutex));
    EXPECT_EQ(mutex.wait(), Wait::Obtained);
    EXPECT_EQ(mutex.tryWait(), Wait::Obtained);
    for (const Wait seen : {Wait::Busy, Wait::Busy, Wait::Obtained}) {
        elsewhere([&] {
            EXPECT_EQ(mutex.tryWait(), seen);
            EXPECT_EQ(seen == Wait::Obtained ? mutex.release() : releaseNothing(mutex),
                      seen == Wait::Obtained);
        });
        EXPECT_EQ(seen == Wait::Busy ? mutex.release() : releaseNothing(mutex), seen == Wait::Busy);
    }
}

TEST(Mutex, WaitsForATime) {
    using namespace std::chrono_literals;
    Mutex mutex;
    EXPECT_EQ(mutex.waitFor(0ms), Wait::Obtained);
    elsewhere([&] {
        const auto before = std::chrono::steady_clock::now();
        EXPECT_EQ(mutex.waitFor(20ms), Wait::Busy);
        EXPECT_GE(std::chrono::steady_clock::now() - before, 20ms);
    });
    std::thread waiting([&] {
        EXPECT_EQ(mutex.waitFor(100s), Wait::Obtained);
        EXPECT_TRUE(mutex.release());
    });
    EXPECT_TRUE(mutex.release());
    waiting.join();
}

TEST(Mutex, TellsOnceOfAnOwnerThatEnded) {
    for (const bool tried : {false, true}) {
        Mutex mutex;
        elsewhere([&] { mutex.wait(), mutex.wait(); });
        const auto next = [&] { return tried ? mutex.tryWait() : mutex.wait(); };
        EXPECT_EQ(next(), Wait::Abandoned);
        EXPECT_FALSE(releaseNothing(mutex));
        EXPECT_EQ(next(), Wait::Obtained);
        EXPECT_TRUE(mutex.release());
        EXPECT_FALSE(releaseNothing(mutex));
    }
}

TEST(Lock, TakesOverAndGivesBack) {
    Mutex mutex;
    elsewhere([&] { mutex.wait(); });
    {
        const platform::Lock lock(mutex);
        EXPECT_TRUE(lock.isHeld());
        elsewhere([&] { EXPECT_EQ(mutex.tryWait(), Wait::Busy); });
    }
    elsewhere([&] {
        EXPECT_EQ(mutex.tryWait(), Wait::Obtained);
        EXPECT_TRUE(mutex.release());
    });
}

}  // namespace
