// Eight threads call every export at random, starts and stops among them, on each kind of agent, which calls
// what it may from within its log, too. A watchdog tells when one of them does not come back.
// ZEPHAN_STRESS_SECONDS sets how long it takes for each kind.
#include "Library.h"
#include "lib/AgentHost.h"
#include "lib/FreeRuntime.h"
#include "lib/Observer.h"
#include "lib/Thread.h"

#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <random>
#include <string_view>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace std::chrono_literals;

/// What one of the calling threads does, for the watchdog.
struct Caller {
    std::atomic<const char*> doing = "nothing";
    std::atomic<std::uint64_t> calls = 0;
};

constexpr std::size_t kCallers = 8;
constexpr int kSpeed = 100;      // of sleeps, polls, reports and the wait of a stop
constexpr auto kPatience = 60s;  // of the watchdog; sanitizers and others take most of the machine

std::chrono::seconds duration() {
    const char* const set = std::getenv("ZEPHAN_STRESS_SECONDS");
    return std::chrono::seconds(set == nullptr ? 5 : std::atoi(set));
}

class Stress final : public agent::Observer {
  public:
    explicit Stress(agent::ThreadDestroy how) : host_({this, nullptr, &runtime_}) {
        host_.setThreadDestroy(how);
        host_.setLinkThread(true);
        host_.setEnterpriseDelay(100ms);
        host_.setPollDelay(50ms);
    }

    void run() {
        Families families(library_, host_.serviceAgent(), workspace_);
        library_.ZPXRSMWSCreateService(this, &service_);
        std::vector<std::thread> threads;
        for (std::size_t i = 0; i < kCallers; ++i) {
            threads.emplace_back([&, i] { call(families, callers_[i], static_cast<unsigned int>(i)); });
        }
        std::thread watchdog([this] { watch(); });
        std::this_thread::sleep_for(duration());
        over_ = true;
        for (std::thread& thread : threads) {
            thread.join();
        }
        joined_ = true;
        watchdog.join();
        EXPECT_EQ(families.stop(Families::logger), 0);
        EXPECT_TRUE(host_.endThreads());
        library_.ZPXRSMWSDestroyService(this, service_);
    }

    void onLog(int /*level*/, std::string_view /*text*/) override {
        constexpr int deepest = 2;
        constexpr unsigned int oneOf = 8;
        thread_local int depth = 0;
        const unsigned int choice = lines_++ % oneOf;
        if (over_ || depth == deepest) {
            return;
        }
        ++depth;
        // Sending waits for the link thread, which therefore must not wait for an order.
        const agent::Thread* const thread = agent::Thread::current();
        const bool mayOrder = thread == nullptr || thread->kind() == agent::Thread::Kind::module;
        if (choice == 0) {
            library_.ZPXRSMLoggerAudit(depth == 1 ? "opened" : "closed");
        } else if (choice == 1) {
            command("ExitRSM", nullptr);
        } else if (choice == 2 && mayOrder) {
            Families::connect(service_, "1", "1");
        }
        --depth;
    }

  private:
    void call(Families families, Caller& self, unsigned int seed) {
        std::mt19937 random(seed);
        void* handle = &self;  // any will do for what only asks whether there is one
        ZPService* service = nullptr;
        library_.ZPXRSMWSCreateService(handle, &service);
        const auto number = [&random](int below) {
            return static_cast<int>(random() % static_cast<unsigned int>(below));
        };
        struct Call {
            const char* name;
            int weight;
            std::function<void()> make;
        };
        const Call calls[] = {
            {"log", 40, [&] { library_.ZPXRSMLoggerLog(static_cast<std::uint8_t>(number(255)), ""); }},
            {"audit", 20, [&] { host_.audit(number(2) == 0 ? "opened" : "closed"); }},
            {"KRXLog", 20, [&] { KRXLog(level::kForce, "%s", ""); }},
            {"connect", 10, [&] { Families::connect(service, "1", std::to_string(number(3))); }},
            {"disconnect", 5,
             [&] {
                 sim::callService(*service, "disconnect", {{"memberName", "a"}});
             }},
            {"ScheduleRSM", 3, [&] { schedule(); }},
            {"ExitRSM", 3, [&] { command("ExitRSM", nullptr); }},
            {"other command", 1, [&] { command("Reboot", nullptr); }},
            {"get and set", 1, [&] { library_.ZPXRSMDSGet(), library_.ZPXRSMDSSet(); }},
            {"response", 1, [&] { library_.ZPXRSMDSDestoryResponse(); }},
            {"service", 2,
             [&] {
                 library_.ZPXRSMWSDestroyService(handle, service);
                 library_.ZPXRSMWSCreateService(handle, &service);
             }},
            {"asset", 1, [&] { host_.setAssetPresent(number(2) == 0); }},
            {"start data source", 2, [&] { EXPECT_EQ(families.start(Families::dataSource), 0); }},
            {"start logger", 2, [&] { EXPECT_EQ(families.start(Families::logger), 0); }},
            {"start RSM", 2, [&] { EXPECT_EQ(families.start(Families::rsm), 0); }},
            {"start web service", 2, [&] { EXPECT_EQ(families.start(Families::webService), 0); }},
            {"stop data source", 1, [&] { EXPECT_EQ(families.stop(Families::dataSource), 0); }},
            {"stop logger", 1, [&] { EXPECT_EQ(families.stop(Families::logger), 0); }},
            {"stop RSM", 1, [&] { EXPECT_EQ(library_.ZPRSMExtnShutdown(handle), 0); }},
            {"stop web service", 1, [&] { EXPECT_EQ(library_.ZPXRSMWSShutdown(handle), 0); }},
        };
        std::vector<int> weights;
        for (const Call& one : calls) {
            weights.push_back(one.weight);
        }
        std::discrete_distribution<std::size_t> choice(weights.begin(), weights.end());
        while (!over_) {
            const Call& one = calls[choice(random)];
            self.doing = one.name;
            one.make();
            ++self.calls;
        }
        library_.ZPXRSMWSDestroyService(handle, service);
        self.doing = "nothing";
    }

    void schedule() const {
        std::string name = "GracePeriod";
        std::string value = "1";
        Prop property{name.data(), nullptr, nullptr, value.data()};
        const PropList list{&property, 1};
        command("ScheduleRSM", &list);
    }

    void command(const char* name, const PropList* list) const {
        PropList* answer = nullptr;
        library_.ZPXRSMDSExectue(nullptr, nullptr, name, list, &answer);
        library_.ZPXRSMDSDestroyPropList(nullptr, nullptr, answer);
    }

    void watch() {
        std::array<std::uint64_t, kCallers> seen{};
        auto quietSince = std::chrono::steady_clock::now();
        while (!joined_) {
            std::this_thread::sleep_for(50ms);
            bool all = true;
            for (std::size_t i = 0; i < kCallers; ++i) {
                all = all && callers_[i].calls != seen[i];
            }
            if (all) {
                for (std::size_t i = 0; i < kCallers; ++i) {
                    seen[i] = callers_[i].calls;
                }
                quietSince = std::chrono::steady_clock::now();
            }
            if (std::chrono::steady_clock::now() - quietSince > kPatience) {
                for (std::size_t i = 0; i < kCallers; ++i) {
                    std::fprintf(stderr, "caller %zu: %s, %s\n", i, callers_[i].doing.load(),
                                 callers_[i].calls == seen[i] ? "does not come back" : "goes on");
                }
                std::abort();
            }
        }
    }

    const support::Workspace workspace_;
    agent::FreeRuntime runtime_{kSpeed};
    agent::AgentHost host_;
    const Library library_;
    ZPService* service_ = nullptr;  ///< of what is called from within the log
    std::atomic<unsigned int> lines_ = 0;
    std::array<Caller, kCallers> callers_;
    std::atomic<bool> over_ = false;
    std::atomic<bool> joined_ = false;
};

struct AgentRow {
    support::RowName name;
    agent::ThreadDestroy how;
};

const support::Rows<AgentRow> agentRows("Stress/EveryExportAtRandom",
                                        {{"sleep", agent::ThreadDestroy::sleep},
                                         {"anywhere", agent::ThreadDestroy::anywhere},
                                         {"unwind", agent::ThreadDestroy::unwind},
                                         {"leave", agent::ThreadDestroy::leave}},
                                        [](const AgentRow& row) {
                                            Stress(row.how).run();
                                            EXPECT_FALSE(Library::isLoaded());
                                        });

}  // namespace
