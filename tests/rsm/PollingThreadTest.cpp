// The one polling thread's life: who may still see an order, who starts one, and what is told when
// none can be.
#include "controller/PollingThread.h"
#include "lib/AgentHost.h"
#include "lib/FreeRuntime.h"
#include "lib/Observer.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <mutex>
#include <string>

#include <gtest/gtest.h>

namespace {

using namespace std::chrono_literals;

struct Watcher final : agent::Observer {
    void onLog(int level, std::string_view text) override {
        const std::scoped_lock lock(mutex);
        all += std::to_string(level) + " " + std::string(text) + "|";
    }
    void onThreadStart(const std::string& name, std::int8_t result) override {
        EXPECT_EQ(name + std::to_string(result), "Data Polling0");
        atStart();
    }
    std::mutex mutex;
    std::string all;
    std::function<void()> atStart = [] {};
};

constexpr char kNotStarted[] =
    "50 \n generateThread --- The extension is being stopped, no Force Polling thread is started.|";

class PollingThreadTest : public testing::Test {
  protected:
    /// A thread that says its number, and ends when it is told to.
    struct Life {
        std::promise<PollingThread::Number> number;
        std::promise<void> end;
        static int run(void* life) {
            auto& own = *static_cast<Life*>(life);
            own.number.set_value(PollingThread::enter(life));
            own.end.get_future().wait();
            return 0;
        }
    };

    std::int8_t create(void* argument, KRXThreadEntry entry = &Life::run) {
        return thread_.createThread(entry, argument, [this] { ++alreadyThere_; });
    }

    Watcher watcher_;
    agent::FreeRuntime runtime_{100};  // the three seconds of a stop are 30 ms
    agent::AgentHost host_{{&watcher_, nullptr, &runtime_}};
    PollingThread thread_;
    int alreadyThere_ = 0;
};

TEST_F(PollingThreadTest, SeesOrdersUntilItLeaves) {
    Life life;
    EXPECT_FALSE(thread_.isHeld() || thread_.seesOrders());
    EXPECT_EQ(create(&life), 0);
    const PollingThread::Number number = life.number.get_future().get();
    EXPECT_TRUE(number != 0 && thread_.has(number) && !thread_.has(number + 1) && !thread_.has(0));
    EXPECT_TRUE(thread_.isHeld() && thread_.seesOrders());
    EXPECT_EQ(create(&life), 0) << "and no second one";
    EXPECT_EQ(alreadyThere_, 1);
    EXPECT_EQ(watcher_.all, "50 \n createThread --- Thread was already created.|");
    thread_.setLeaving(number + 1);
    thread_.setEnded(number + 1);
    EXPECT_TRUE(thread_.seesOrders());
    thread_.setLeaving(number);
    EXPECT_TRUE(thread_.isHeld() && !thread_.seesOrders());
    life.end.set_value();
    Life next;
    EXPECT_EQ(create(&next), 0) << "the one that leaves is replaced";
    const PollingThread::Number second = next.number.get_future().get();
    EXPECT_TRUE(second > number && thread_.has(second) && !thread_.has(number) && thread_.seesOrders());
    thread_.setEnded(second);
    EXPECT_FALSE(thread_.seesOrders());
    next.end.set_value();
    thread_.stop();
    EXPECT_FALSE(thread_.isHeld() || thread_.has(second));
    EXPECT_EQ(watcher_.all.substr(watcher_.all.find('|') + 1),
              "250 \n Force Polling Thread shutdown complete.|");
}

TEST_F(PollingThreadTest, AFinishedOneIsReleased) {
    EXPECT_EQ(create(this, [](void* argument) { return PollingThread::enter(argument) == 0 ? 1 : 0; }), 0);
    for (const auto until = std::chrono::steady_clock::now() + 30s;
         thread_.isHeld() && std::chrono::steady_clock::now() < until;) {
        thread_.releaseFinished();
    }
    EXPECT_FALSE(thread_.isHeld() || thread_.seesOrders());
    thread_.stop();
    EXPECT_EQ(watcher_.all, "");
}

TEST_F(PollingThreadTest, AFinishedOneIsReplaced) {
    EXPECT_EQ(create(this, [](void* argument) { return PollingThread::enter(argument) == 0 ? 1 : 0; }), 0);
    EXPECT_TRUE(host_.endThreads());
    Life life;
    EXPECT_EQ(create(&life), 0);
    ASSERT_EQ(alreadyThere_, 0);
    EXPECT_TRUE(thread_.has(life.number.get_future().get()));
    life.end.set_value();
    thread_.stop();
}

TEST_F(PollingThreadTest, AStopWithoutAnEndDropsIt) {
    Life life;
    EXPECT_EQ(create(&life), 0);
    const PollingThread::Number number = life.number.get_future().get();
    EXPECT_FALSE(thread_.isClosing());
    thread_.stop();
    EXPECT_TRUE(thread_.isClosing() && !thread_.has(number));
    EXPECT_EQ(watcher_.all, "250 \n Force Polling Thread FORCEFULLY shutdown complete.|");
    watcher_.all.clear();
    Life next;
    EXPECT_EQ(create(&next), -1);
    EXPECT_EQ(watcher_.all, kNotStarted);
    life.end.set_value();
    EXPECT_TRUE(host_.endThreads());
}

TEST_F(PollingThreadTest, AStopInTheMiddleOfAStart) {
    Life life;
    PollingThread::Number number = 0;
    watcher_.atStart = [&] {
        number = life.number.get_future().get();
        std::async(std::launch::async, [this] { thread_.stop(); }).get();
        EXPECT_TRUE(thread_.has(number)) << "its starter ends it";
        life.end.set_value();
    };
    EXPECT_EQ(create(&life), -1);
    EXPECT_FALSE(thread_.has(number) || thread_.isHeld());
    EXPECT_EQ(watcher_.all, kNotStarted);
}

// An agent may carry out queued orders while it starts a thread.
TEST_F(PollingThreadTest, AnOrderInTheMiddleOfAStartStartsNoOther) {
    Life life;
    std::int8_t inner = -1;
    watcher_.atStart = [&] { inner = create(&life); };
    EXPECT_EQ(create(&life), 0);
    EXPECT_EQ(inner, 0);
    EXPECT_EQ(alreadyThere_, 1);
    life.end.set_value();
    thread_.stop();
    EXPECT_FALSE(thread_.isHeld());
}

// The thread that its starter waits for, since a stop came first, may be carrying out an order itself.
TEST_F(PollingThreadTest, AStopInTheMiddleOfAStartBesideAnOrderOfTheThread) {
    struct Ordering {
        std::function<std::int8_t()> order;
        std::promise<void> stopped;
        std::int8_t result = 0;
    } ordering;
    ordering.order = [&] { return create(&ordering); };
    watcher_.atStart = [&] {
        std::async(std::launch::async, [this] { thread_.stop(); }).get();
        ordering.stopped.set_value();
    };
    EXPECT_EQ(create(&ordering,
                     [](void* argument) {
                         auto& own = *static_cast<Ordering*>(argument);
                         PollingThread::enter(argument);
                         own.stopped.get_future().wait();
                         own.result = own.order();
                         return 0;
                     }),
              -1);
    EXPECT_EQ(ordering.result, -1);
    EXPECT_EQ(watcher_.all, std::string(kNotStarted) + kNotStarted) << "each told once its order was over";
}

TEST_F(PollingThreadTest, OneThatHasYetToBeginKeepsOthersBack) {
    struct Late {
        std::promise<void> begin;
        std::promise<PollingThread::Number> number;
    } life;
    const auto late = [](void* argument) {
        auto& own = *static_cast<Late*>(argument);
        own.begin.get_future().wait();
        own.number.set_value(PollingThread::enter(argument));
        return 0;
    };
    EXPECT_EQ(create(&life, late), 0);
    PollingThread other;
    const auto createOther = [&] { return other.createThread(late, &life, [] {}); };
    EXPECT_EQ(createOther(), -1);
    EXPECT_EQ(
        watcher_.all,
        "50 \n generateThread --- A Force Polling thread that was started before has yet to begin, none is started.|");
    EXPECT_EQ(PollingThread::enter(&other), 0) << "with another argument";
    life.begin.set_value();
    EXPECT_TRUE(thread_.has(life.number.get_future().get()));
    EXPECT_EQ(PollingThread::enter(&life), 0) << "a number is given once";
    thread_.stop();
}

}  // namespace
