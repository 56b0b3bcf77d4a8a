// The one polling thread's life: who may still see an order, who starts one, and what is told when
// none can be.
#include "controller/PollingThread.h"
#include "lib/AgentHost.h"
#include "lib/FreeRuntime.h"
#include "lib/Observer.h"

#include <atomic>
#include <functional>
#include <future>
#include <mutex>
#include <string>

#include <gtest/gtest.h>

namespace {

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
            own.number.set_value(PollingThread::enter());
            own.end.get_future().wait();
            return 0;
        }
    };

    using Creation = PollingThread::Creation;
    Creation create(void* argument, KRXThreadEntry entry = &Life::run) {
        return thread_.createThread(entry, argument);
    }

    Watcher watcher_;
    agent::FreeRuntime runtime_{10};  // the three seconds of a stop are 300 ms
    agent::AgentHost host_{{&watcher_, nullptr, &runtime_}};
    platform::Mutex lock_;
    PollingThread thread_{lock_};
};

TEST_F(PollingThreadTest, SeesOrdersUntilItLeaves) {
    Life life;
    EXPECT_FALSE(thread_.isHeld() || thread_.seesOrders());
    EXPECT_EQ(create(&life), Creation::Started);
    const PollingThread::Number number = life.number.get_future().get();
    EXPECT_TRUE(number != 0 && thread_.has(number) && !thread_.has(number + 1) && !thread_.has(0));
    EXPECT_TRUE(thread_.isHeld() && thread_.seesOrders());
    EXPECT_EQ(create(&life), Creation::AlreadyThere);
    EXPECT_EQ(watcher_.all, "50 \n createThread --- Thread was already created.|");
    thread_.setLeaving(number + 1);
    EXPECT_TRUE(thread_.seesOrders());
    thread_.setLeaving(number);
    EXPECT_TRUE(thread_.isHeld() && !thread_.seesOrders());
    life.end.set_value();
    Life next;
    EXPECT_EQ(create(&next), Creation::Started) << "the one that leaves is replaced";
    const PollingThread::Number second = next.number.get_future().get();
    EXPECT_TRUE(second > number && thread_.has(second) && !thread_.has(number) && thread_.seesOrders());
    next.end.set_value();
    thread_.stop();
    EXPECT_FALSE(thread_.isHeld() || thread_.has(second));
    EXPECT_EQ(watcher_.all.substr(watcher_.all.find('|') + 1),
              "250 \n Force Polling Thread shutdown complete.|");
}

TEST_F(PollingThreadTest, AStopWithoutAnEndDropsIt) {
    Life life;
    EXPECT_EQ(create(&life), Creation::Started);
    const PollingThread::Number number = life.number.get_future().get();
    EXPECT_FALSE(thread_.isClosing());
    thread_.stop();
    EXPECT_TRUE(thread_.isClosing() && !thread_.has(number));
    EXPECT_EQ(watcher_.all, "250 \n Force Polling Thread FORCEFULLY shutdown complete.|");
    watcher_.all.clear();
    Life next;
    EXPECT_EQ(create(&next), Creation::Stopping);
    EXPECT_EQ(watcher_.all, kNotStarted);
    life.end.set_value();
    EXPECT_TRUE(host_.endThreads());
}

// An agent may carry out queued orders while it starts a thread.
TEST_F(PollingThreadTest, AnOrderInTheMiddleOfAStartStartsNoOther) {
    Life life;
    Creation inner = Creation::Failed;
    watcher_.atStart = [&] { inner = create(&life); };
    EXPECT_EQ(create(&life), Creation::Started);
    EXPECT_EQ(inner, Creation::AlreadyThere);
    life.end.set_value();
    thread_.stop();
    EXPECT_FALSE(thread_.isHeld());
}

// The thread that its starter waits for, since a stop came first, may be carrying out an order itself.
TEST_F(PollingThreadTest, AStopInTheMiddleOfAStartBesideAnOrderOfTheThread) {
    struct Ordering {
        std::function<Creation()> order;
        std::promise<void> stopped;
        Creation result = Creation::Failed;
    } ordering;
    ordering.order = [&] { return create(&ordering); };
    watcher_.atStart = [&] {
        std::async(std::launch::async, [this] { thread_.stop(); }).get();
        ordering.stopped.set_value();
    };
    EXPECT_EQ(create(&ordering,
                     [](void* argument) {
                         auto& own = *static_cast<Ordering*>(argument);
                         PollingThread::enter();
                         own.stopped.get_future().wait();
                         own.result = own.order();
                         return 0;
                     }),
              Creation::Stopping);
    EXPECT_EQ(ordering.result, Creation::Stopping);
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
        own.number.set_value(PollingThread::enter());
        return 0;
    };
    EXPECT_EQ(create(&life, late), Creation::Started);
    PollingThread other(lock_);
    EXPECT_EQ(other.createThread(late, &life), Creation::Failed);
    EXPECT_EQ(
        watcher_.all,
        "50 \n generateThread --- A Force Polling thread that was started before has yet to begin, none is started.|");
    life.begin.set_value();
    EXPECT_TRUE(thread_.has(life.number.get_future().get()));
    EXPECT_EQ(PollingThread::enter(), 0) << "a number is given once";
    thread_.stop();
}

}  // namespace
