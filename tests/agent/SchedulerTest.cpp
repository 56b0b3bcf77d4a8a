#include "lib/AgentHost.h"
#include "lib/Observer.h"
#include "lib/Thread.h"
#include "platform/agent/Threads.h"
#include "sim/time/Scheduler.h"
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

}  // namespace
}  // namespace sim
