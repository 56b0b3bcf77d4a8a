#include "lib/AgentHost.h"
#include "lib/Observer.h"
#include "lib/Thread.h"
#include "platform/agent/Threads.h"
#include "sim/Scheduler.h"
#include "support/Rows.h"

#include <functional>

#include <gtest/gtest.h>

namespace sim {
namespace {

using std::chrono::seconds;

/// Threads of the agent's library on a virtual clock, with a journal of who did what when.
class Threads : protected agent::Observer {
  public:
    void note(const std::string& what) {
        const agent::Thread* thread = agent::Thread::current();
        const auto now = std::chrono::duration_cast<std::chrono::milliseconds>(clock_.now()).count();
        journal_ +=
            std::to_string(now) + " " + (thread == nullptr ? "host" : thread->name()) + " " + what + "\n";
    }

    /// Runs `work` on a new thread, which is constructed and started.
    void start(KRXThread& thread, const char* name, std::function<void()> work) {
        ASSERT_EQ(KRXThreadConstruct(&thread), 0);
        work_.push_back(std::move(work));
        ASSERT_EQ(KRXThreadStart(&thread, name, 3, 0, 4096, &Threads::entry, &work_.back()), 0);
    }

    std::string takeJournal() { return std::exchange(journal_, {}); }

    Clock clock_{seconds(1000)};
    Scheduler scheduler_{clock_};

  private:
    static int entry(void* work) {
        (*static_cast<std::function<void()>*>(work))();
        return 9;
    }
    void onThreadEnd(int result) override { note("ended " + std::to_string(result)); }
    void onThreadDestroyed(const std::string& name) override { note("destroyed " + name); }

    std::string journal_;
    std::deque<std::function<void()>> work_;
    agent::AgentHost host_{{this, nullptr, &scheduler_}};
};

class SchedulerTest : public testing::Test, protected Threads {};

TEST_F(SchedulerTest, ActionsGoFirstAndThreadsInOrder) {
    KRXThread first;
    KRXThread second;
    const auto work = [this] {
        for (int i = 0; i < 2; ++i) {
            note("works");
            KRXThreadSleep(1000);
        }
    };
    start(first, "A", work);
    start(second, "B", work);
    note("started");
    EXPECT_EQ(scheduler_.idle(seconds(1), false), Scheduler::Wake::due);
    note("acts");
    EXPECT_EQ(scheduler_.idle(seconds(1), false), Scheduler::Wake::due);
    EXPECT_EQ(scheduler_.idle(seconds(60), true), Scheduler::Wake::noThreads);
    note("done");
    EXPECT_EQ(takeJournal(),
              "0 host started\n0 A works\n0 B works\n1000 host acts\n1000 A works\n1000 B works\n"
              "2000 A ended 9\n2000 B ended 9\n2000 host done\n");
    EXPECT_EQ(KRXThreadIsActive(&first), 0);
    int result = 0;
    EXPECT_EQ(KRXWaitForThread(&first, &result, 0), 0);
    EXPECT_EQ(result, 9);
    KRXThreadDestroy(&first);
    KRXThreadDestroy(&second);
    EXPECT_EQ(takeJournal(), "");
}

struct WaitRow {
    support::RowName name;
    unsigned int sleep;
    int waited;
    int passed;
    const char* journal;
};

const support::Rows<WaitRow> waitRows(
    "Scheduler/WaitingHostComesAfterWhatIsDue",
    {{"sleep that ends before", 2000, 0, 2, "3000 A ended 9\n3000 host waited\n"},
     {"sleep that ends with the wait", 3000, 0, 3, "4000 A ended 9\n4000 host waited\n"},
     {"longer sleep", 3001, -1, 3, "4000 host waited\n4000 host destroyed A\n"}},
    [](const WaitRow& row) {
        Threads threads;
        threads.scheduler_.idle(seconds(1), false);
        KRXThread thread;
        threads.start(thread, "A", [&] { KRXThreadSleep(row.sleep); });
        EXPECT_EQ(KRXWaitForThread(&thread, nullptr, 3000), row.waited);
        threads.note("waited");
        EXPECT_EQ(threads.clock_.now(), seconds(1 + row.passed));
        KRXThreadDestroy(&thread);
        EXPECT_EQ(threads.takeJournal(), row.journal);
    });

TEST_F(SchedulerTest, StoppedThreadsRunNoMore) {
    KRXThread sleeping;
    KRXThread unscheduled;
    bool unwound = false;
    struct Unwinding {
        bool& unwound;
        ~Unwinding() { unwound = true; }
    };
    start(sleeping, "A", [&] {
        const Unwinding local{unwound};
        KRXThreadSleep(5000);
        note("must not run");
    });
    scheduler_.idle(seconds(1), false);
    start(unscheduled, "B", [this] { note("must not run"); });
    KRXThreadDestroy(&unscheduled);
    EXPECT_EQ(scheduler_.stopAll(), std::vector<std::string>{"A"});
    EXPECT_EQ(KRXThreadIsActive(&sleeping), 0);
    EXPECT_EQ(scheduler_.idle(seconds(10), true), Scheduler::Wake::noThreads);
    EXPECT_EQ(takeJournal(), "1000 host destroyed B\n");
    EXPECT_FALSE(unwound);
    scheduler_.releaseAll();
}

TEST_F(SchedulerTest, ThreadsStartAndAwaitThreads) {
    KRXThread outer;
    KRXThread inner;
    start(outer, "A", [&] {
        start(inner, "B", [] { KRXThreadSleep(500); });
        EXPECT_EQ(KRXThreadGetPriority(KRXThreadGetHandleSelf()), 3);
        EXPECT_NE(KRXWaitForThread(&inner, nullptr, 100), 0);
        note("goes on");
        EXPECT_EQ(KRXWaitForThread(&inner, nullptr, 1000), 0);
    });
    EXPECT_EQ(scheduler_.idle(seconds(10), true), Scheduler::Wake::noThreads);
    EXPECT_EQ(takeJournal(), "100 A goes on\n500 B ended 9\n500 A ended 9\n");
    KRXThreadDestroy(&outer);
    KRXThreadDestroy(&inner);
}

TEST_F(SchedulerTest, OrderedFailuresHappenOnce) {
    KRXThread thread;
    scheduler_.failNextConstruct();
    EXPECT_EQ(KRXThreadConstruct(&thread), -1);
    ASSERT_EQ(KRXThreadConstruct(&thread), 0);
    scheduler_.failNextStart();
    EXPECT_EQ(KRXThreadStart(
                  &thread, "A", 0, 0, 4096, [](void*) { return 0; }, nullptr),
              -1);
    KRXThreadDestroy(&thread);
    start(thread, "B", [] {});
    EXPECT_EQ(scheduler_.idle(seconds(1), true), Scheduler::Wake::noThreads);
    EXPECT_EQ(takeJournal(), "0 B ended 9\n");
    KRXThreadDestroy(&thread);
}

TEST_F(SchedulerTest, ClockStepsMoveTheWallOnly) {
    KRXThread thread;
    start(thread, "A", [] { KRXThreadSleep(4000); });
    scheduler_.idle(seconds(1), false);
    clock_.step(seconds(-600));
    EXPECT_EQ(clock_.wall(), seconds(401));
    KRXThreadSleep(2000);
    EXPECT_EQ(clock_.now(), seconds(3));
    EXPECT_EQ(scheduler_.idle(seconds(90), true), Scheduler::Wake::noThreads);
    EXPECT_EQ(takeJournal(), "4000 A ended 9\n");
    KRXThreadDestroy(&thread);
}

}  // namespace
}  // namespace sim
