// What an agent may do to the module besides what it is asked for.
#include "lib/AgentHost.h"
#include "lib/Observer.h"
#include "platform/agent/Logging.h"
#include "platform/agent/ServiceAgent.h"
#include "platform/agent/Threads.h"
#include "support/Rows.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <pthread.h>

namespace agent {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kHour(3'600'000);

void await(const std::atomic<bool>& flag) {
    while (!flag) {
        std::this_thread::yield();
    }
}

/// A mutex whose next owner learns what became of the one before.
class RobustMutex final {
  public:
    RobustMutex() {
        pthread_mutexattr_t attributes;
        pthread_mutexattr_init(&attributes);
        pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST);
        pthread_mutex_init(&mutex_, &attributes);
        pthread_mutexattr_destroy(&attributes);
    }
    RobustMutex(const RobustMutex&) = delete;
    RobustMutex& operator=(const RobustMutex&) = delete;
    ~RobustMutex() {
        lock();
        unlock();
        pthread_mutex_destroy(&mutex_);
    }

    int lock() { return pthread_mutex_lock(&mutex_); }
    void recover() { pthread_mutex_consistent(&mutex_); }
    void unlock() { pthread_mutex_unlock(&mutex_); }

  private:
    pthread_mutex_t mutex_{};
};

/// A thread that holds a mutex, polls once and sleeps once.
struct Victim final : Observer {
    explicit Victim(AgentHost::Plugs plugs = {}) : host((plugs.observer = this, plugs)) {}

    void onForcePoll() override { polls = true; }
    void onSleep(unsigned int /*milliseconds*/) override { sleeps = true; }
    void onThreadEnd(int /*result*/) override { completed = true; }
    void onThreadDestroyed(const std::string& /*name*/) override { destroyed = true; }

    static int work(void* argument) {
        auto& self = *static_cast<Victim*>(argument);
        struct Frame {
            Victim& victim;
            ~Frame() {
                victim.unwound = true;
                victim.mutex.unlock();
            }
        };
        self.mutex.lock();
        const Frame frame{self};
        int state = 0;
        pthread_setcancelstate(self.cancellable ? PTHREAD_CANCEL_ENABLE : PTHREAD_CANCEL_DISABLE, &state);
        self.host.serviceAgent()->GetAsset(0)->ForcePoll();
        pthread_setcancelstate(state, nullptr);
        self.polled = true;
        KRXThreadSleep(static_cast<unsigned int>(self.sleep.count()));
        return 0;
    }

    bool cancellable = true;
    milliseconds sleep = kHour;
    RobustMutex mutex;
    std::atomic<bool> polls = false;
    std::atomic<bool> sleeps = false;
    std::atomic<bool> polled = false;
    std::atomic<bool> unwound = false;
    std::atomic<bool> completed = false;
    std::atomic<bool> destroyed = false;
    AgentHost host;
};

constexpr milliseconds kSoon(30);
constexpr milliseconds kAtOnce(0);

struct DestroyRow {
    support::RowName name;
    ThreadDestroy how;
    milliseconds poll;
    milliseconds sleep;
    bool destroyedInPoll;
    bool cancellable;
    int mutex;
    bool polled;
    bool unwound;
    bool completed;
};

const support::Rows<DestroyRow> destroyRows(
    "HarshAgent/DestroysThreads",
    {
        {"in its sleep", ThreadDestroy::sleep, kAtOnce, kHour, false, true, EOWNERDEAD, true, false, false},
        {"before its sleep", ThreadDestroy::sleep, kSoon, kHour, true, true, EOWNERDEAD, true, false, false},
        {"in a poll", ThreadDestroy::anywhere, kHour, kHour, true, true, EOWNERDEAD, false, false, false},
        {"anywhere: sleep", ThreadDestroy::anywhere, kAtOnce, kHour, false, true, EOWNERDEAD, true, false,
         false},
        {"unwound in a poll", ThreadDestroy::unwind, kHour, kHour, true, true, 0, false, true, false},
        {"unwound in its sleep", ThreadDestroy::unwind, kAtOnce, kHour, false, true, 0, true, true, false},
        {"not yet unwound", ThreadDestroy::unwind, kSoon, kHour, true, false, 0, true, true, false},
        {"left", ThreadDestroy::leave, kSoon, kSoon, true, true, 0, true, true, true},
    },
    [](const DestroyRow& row) {
        Victim victim;
        victim.sleep = row.sleep;
        victim.cancellable = row.cancellable;
        victim.host.setPollDelay(row.poll);
        victim.host.setThreadDestroy(row.how);
        KRXThread thread;
        ASSERT_EQ(KRXThreadConstruct(&thread), 0);
        ASSERT_EQ(KRXThreadStart(&thread, "A", 0, 0, 4096, Victim::work, &victim), 0);
        await(row.destroyedInPoll ? victim.polls : victim.sleeps);
        const auto before = std::chrono::steady_clock::now();
        KRXThreadDestroy(&thread);
        EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(5));
        EXPECT_EQ(thread.state, nullptr);
        EXPECT_TRUE(victim.destroyed);
        EXPECT_EQ(victim.mutex.lock(), row.mutex);
        victim.mutex.recover();
        victim.mutex.unlock();
        if (row.completed) {
            await(victim.completed);
        }
        EXPECT_TRUE(victim.host.endThreads());
        EXPECT_EQ(victim.polled, row.polled);
        EXPECT_EQ(victim.unwound, row.unwound);
        EXPECT_EQ(victim.completed, row.completed);
    });

TEST(HarshAgent, ThreadsMayGiveUpThemselves) {
    struct Self {
        KRXThread thread;
        std::atomic<bool> wentOn = false;
    } self;
    AgentHost host;
    host.setThreadDestroy(ThreadDestroy::leave);
    ASSERT_EQ(KRXThreadConstruct(&self.thread), 0);
    const auto work = [](void* argument) {
        auto& mine = *static_cast<Self*>(argument);
        KRXThreadDestroy(&mine.thread);
        KRXThreadSleep(1);
        mine.wentOn = true;
        return 0;
    };
    ASSERT_EQ(KRXThreadStart(&self.thread, "A", 0, 0, 4096, work, &self), 0);
    await(self.wentOn);
}

TEST(HarshAgent, HostEndsWhatWasLeft) {
    Victim* victim = new Victim;
    victim->host.setThreadDestroy(ThreadDestroy::leave);
    KRXThread thread;
    ASSERT_EQ(KRXThreadConstruct(&thread), 0);
    ASSERT_EQ(KRXThreadStart(&thread, "A", 0, 0, 4096, Victim::work, victim), 0);
    await(victim->sleeps);
    KRXThreadDestroy(&thread);
    delete victim;  // Ends the thread, which would find nothing any more.
}

TEST(HarshAgent, LogLockLetsOneThreadIn) {
    static std::atomic<int> inside;
    static std::atomic<bool> overlapped;
    static std::atomic<int> lines;
    inside = lines = 0;
    overlapped = false;
    AgentHost host;
    host.setLogLock(true);
    KRXLogSetFunc([](std::uint8_t level, const char* /*text*/) {
        if (level == 1) {
            overlapped = overlapped || ++inside > 1;
            std::this_thread::yield();
            KRXLog(2, "again");  // re-entrant
            --inside;
        }
        ++lines;
        return std::int8_t{0};
    });
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([] {
            for (int j = 0; j < 50; ++j) {
                KRXLog(1, "line");
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    KRXLogSetFunc(nullptr);
    EXPECT_FALSE(overlapped);
    EXPECT_EQ(lines, 400);
}

TEST(HarshAgent, ThreadEndedInTheLogGivesItsLockBack) {
    static std::atomic<bool> reached;
    static KRX::ServiceAgentNS::VirtualAsset* asset = nullptr;
    AgentHost host;
    host.setPollDelay(kHour);
    asset = host.serviceAgent()->GetAsset(0);
    for (const ThreadDestroy how : {ThreadDestroy::anywhere, ThreadDestroy::unwind}) {
        reached = false;
        host.setLogLock(true);
        host.setThreadDestroy(how);
        KRXLogSetFunc([](std::uint8_t /*level*/, const char* /*text*/) {
            reached = true;
            asset->ForcePoll();
            return std::int8_t{0};
        });
        KRXThread thread;
        ASSERT_EQ(KRXThreadConstruct(&thread), 0);
        const auto work = [](void* /*argument*/) {
            KRXLog(30, "%s", "line");
            return 0;
        };
        ASSERT_EQ(KRXThreadStart(&thread, "A", 0, 0, 4096, work, nullptr), 0);
        await(reached);
        KRXThreadDestroy(&thread);
        EXPECT_TRUE(host.endThreads());
        KRXLogSetFunc(nullptr);
        KRXLog(30, "must not wait");
    }
}

}  // namespace
}  // namespace agent
