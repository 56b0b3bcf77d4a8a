// An agent that is killed at any instant and started again: what was ordered and what ran is picked up.
#include "Library.h"
#include "lib/AgentHost.h"
#include "lib/Observer.h"

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <random>
#include <thread>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int kKills = 60;  // everything takes longer there
#else
constexpr int kKills = 300;
#endif
constexpr const char* kRunningRate = "60";  // seconds: no poll falls into the test

/// What the agent tells the test.
struct Message {
    enum Kind : int { starting, pickedUp, saved, ordering, ordered } kind;
    int rate = 0;     ///< of the schedule; every order has its own
    int minutes = 0;  ///< of the running period; -1: nothing runs
    int threads = 0;
};

class Agent final : public agent::Observer, public agent::Enterprise {
  public:
    Agent(const Library& library, int pipe) : library_(library), pipe_(pipe) {}

    /// Starts up and gives one order after the other until it is killed.
    [[noreturn]] void run(const support::Workspace& workspace, bool first, int rate) {
        agent::AgentHost host({this, this, nullptr});
        Families families(library_, host.serviceAgent(), workspace);
        tell({Message::starting});
        families.start(Families::dataSource);
        families.start(Families::rsm);
        // The resumed thread may be telling what came before the schedule, and goes on to tell that, too.
        const auto until = std::chrono::steady_clock::now() + std::chrono::seconds(30);
        while (!first && scheduled_ == 0 && std::chrono::steady_clock::now() < until) {
            std::this_thread::yield();
        }
        tell({Message::pickedUp, scheduled_, minutes_, threads_});
        families.start(Families::webService);
        if (first) {
            Families::connect(families.createService(), "5000", kRunningRate);
        }
        for (;;) {
            tell({Message::ordering, ++rate});
            std::string name = "PollingRate", value = std::to_string(rate), date = "RSMStartDate",
                        day = "2999:01:01", time = "RSMStartTime", hour = "10:00:00";
            Prop properties[] = {{name.data(), nullptr, nullptr, value.data()},
                                 {date.data(), nullptr, nullptr, day.data()},
                                 {time.data(), nullptr, nullptr, hour.data()}};
            const PropList list{properties, 3};
            if (library_.ZPXRSMDSExectue(nullptr, nullptr, "ScheduleRSM", &list, nullptr) != 0) {
                std::abort();
            }
            tell({Message::ordered, rate});
        }
    }

  private:
    void tell(Message message) const {
        if (::write(pipe_, &message, sizeof message) != sizeof message) {
            std::abort();
        }
    }
    void onThreadStart(const std::string& /*name*/, std::int8_t /*result*/) override { ++threads_; }
    /// The polling thread sleeps for the first time when it has saved.
    void onSleep(unsigned int /*milliseconds*/) override { tell({Message::saved}); }
    std::int8_t receive(const std::string& /*member*/, const agent::NamedValues& record) override {
        const auto value = [&](std::size_t i) { return record.at(i).second.value(); };
        minutes_ = value(0) == "FORCE_POLL_GRACE" && value(4) == kRunningRate ? std::stoi(value(3)) : -1;
        scheduled_ = std::stoi(value(6));
        return 0;
    }

    const Library& library_;
    const int pipe_;
    std::atomic<int> threads_ = 0;
    std::atomic<int> minutes_ = -1;
    std::atomic<int> scheduled_ = 0;
};

TEST(Kill, AtAnyInstant) {
    const support::Workspace workspace;
    const Library library;  // loaded once for all; only the children call it
    std::mt19937 random(20260301);
    Message order{Message::ordering};  // the last one that was begun
    int answered = 0;                  // the last one that was answered
    int minutes = 5000;
    int killsInOrder = 0;
    int killsBeforeSave = 0;
    for (int kill = 0; kill <= kKills; ++kill) {
        SCOPED_TRACE(kill);
        const bool first = kill == 0;
        int ends[2];
        ASSERT_EQ(::pipe(ends), 0);
        const pid_t child = ::fork();
        if (child == 0) {
            Agent(library, ends[1]).run(workspace, first, order.rate);
        }
        ::close(ends[1]);
        // Every fifth one in its start-up.
        int messages = kill % 5 == 0 ? 1 : std::uniform_int_distribution<int>(2, 20)(random);
        const std::chrono::microseconds pause(std::uniform_int_distribution<int>(0, 1500)(random));
        bool saved = false;
        for (Message message{}; ::read(ends[0], &message, sizeof message) == sizeof message; --messages) {
            saved = saved || message.kind == Message::saved;
            if (message.kind == Message::ordering) {
                order = message;
            } else if (message.kind == Message::ordered) {
                answered = message.rate;
            } else if (message.kind == Message::pickedUp && !first) {
                EXPECT_TRUE(message.rate == answered || message.rate == order.rate) << message.rate;
                EXPECT_TRUE(message.minutes == minutes || message.minutes == minutes - 1) << message.minutes;
                EXPECT_EQ(message.threads, 1);
                minutes = message.minutes;
                answered = order.rate = message.rate;
            }
            // The first one lives until there is something to pick up. What it tells up to the kill is read.
            if (first ? saved && answered > 0 : messages == 1) {
                const auto until = std::chrono::steady_clock::now() + pause;
                while (std::chrono::steady_clock::now() < until) {
                }
                ::kill(child, SIGKILL);
            }
        }
        ::close(ends[0]);
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << status;
        killsInOrder += answered != order.rate;
        killsBeforeSave += !saved;
        ASSERT_FALSE(HasFailure());
    }
    // The instants of interest were met, on any machine.
    EXPECT_GT(killsInOrder, 0);
    EXPECT_GT(killsBeforeSave, 0);
}

}  // namespace
