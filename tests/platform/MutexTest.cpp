// Mutexes whose owners come and go, and threads that are ended while they are inside.
#include "platform/Lock.h"
#include "platform/Mutex.h"
#include "platform/ThreadEnd.h"

#include <atomic>
#include <thread>

#include <gtest/gtest.h>
#include <pthread.h>
#include <unistd.h>

namespace {

using platform::Mutex;
using Wait = platform::Mutex::Wait;

/// What another thread does, to its end.
template <typename Function>
void elsewhere(Function&& function) {
    std::thread(function).join();
}

TEST(Mutex, AdmitsItsOwnerAgainAndNobodyElse) {
    Mutex mutex;
    EXPECT_FALSE(mutex.release());
    EXPECT_EQ(mutex.wait(), Wait::Obtained);
    EXPECT_EQ(mutex.tryWait(), Wait::Obtained);
    for (const Wait seen : {Wait::Busy, Wait::Busy, Wait::Obtained}) {
        elsewhere([&] {
            EXPECT_EQ(mutex.tryWait(), seen);
            EXPECT_EQ(mutex.release(), seen == Wait::Obtained);
        });
        EXPECT_EQ(mutex.release(), seen == Wait::Busy);
    }
}

TEST(Mutex, TellsOnceOfAnOwnerThatEnded) {
    for (const bool tried : {false, true}) {
        Mutex mutex;
        elsewhere([&] { mutex.wait(), mutex.wait(); });
        const auto next = [&] { return tried ? mutex.tryWait() : mutex.wait(); };
        EXPECT_EQ(next(), Wait::Abandoned);
        EXPECT_FALSE(mutex.release());
        EXPECT_EQ(next(), Wait::Obtained);
        EXPECT_TRUE(mutex.release());
        EXPECT_FALSE(mutex.release());
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
    elsewhere([&] { EXPECT_EQ(mutex.tryWait(), Wait::Obtained), mutex.release(); });
}

/// A thread that was told to end while in here goes on to the end of it.
bool endTestKept(std::atomic<bool>& inside, const std::atomic<bool>& ordered) noexcept {
    const platform::KeepThread keep;
    { const platform::KeepThread nested; }
    inside = true;
    while (!ordered) {
        std::this_thread::yield();
    }
    pthread_testcancel();
    char byte = 0;
    return ::read(-1, &byte, 1) < 0;  // admits the end, too
}

TEST(KeepThread, IsUnwoundBehindItsScopeOnly) {
    std::atomic<bool> inside{false};
    std::atomic<bool> ordered{false};
    std::atomic<bool> wentOn{false};
    std::atomic<bool> unwound{false};
    std::thread thread([&] {
        try {
            wentOn = endTestKept(inside, ordered);
            pthread_testcancel();
            FAIL();
        } catch (const platform::ForcedUnwind&) {
            unwound = true;
            throw;
        } catch (...) {
            FAIL();
        }
    });
    while (!inside) {
        std::this_thread::yield();
    }
    pthread_cancel(thread.native_handle());
    ordered = true;
    thread.join();
    EXPECT_TRUE(wentOn);
    EXPECT_TRUE(unwound);
}

}  // namespace
