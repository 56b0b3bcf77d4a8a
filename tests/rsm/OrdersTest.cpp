// Every order in which the four families can be started and stopped, with and without a polling thread.
#include "Library.h"
#include "lib/AgentHost.h"
#include "lib/Observer.h"
#include "sim/time/Clock.h"
#include "sim/time/Scheduler.h"

#include <algorithm>
#include <array>
#include <malloc.h>

#include <gtest/gtest.h>

namespace {

using Order = std::array<int, 4>;

std::vector<Order> orders() {
    std::vector<Order> all;
    Order order{0, 1, 2, 3};
    do {
        all.push_back(order);
    } while (std::next_permutation(order.begin(), order.end()));
    return all;
}

struct Threads final : agent::Observer {
    void onThreadStart(const std::string& /*name*/, std::int8_t result) override { started += result == 0; }
    void onThreadEnd(int /*result*/) override { ++ended; }
    void onThreadDestroyed(const std::string& /*name*/) override { ++ended; }
    int started = 0;
    int ended = 0;
};

TEST(Orders, OfStartsAndStops) {
    const support::Workspace workspace;
    Threads threads;
    sim::Clock clock{std::chrono::microseconds(0)};
    sim::Scheduler scheduler(clock);
    agent::AgentHost host({&threads, nullptr, &scheduler});
    host.setRouting(false);  // the logger would print every line
    int round = 0;
    int pair = 0;
    for (const Order& starts : orders()) {
        {
            const Library library;
            for (const Order& stops : orders()) {
                // Every fourth pair without a polling thread, too, with each order among them.
                const bool both = (pair / 24 + pair % 24) % 4 == 0;
                ++pair;
                for (int polling = both ? 0 : 1; polling < 2; ++polling) {
                    Families families(library, host.serviceAgent(), workspace);
                    const std::string file = "state/" + std::to_string(++round);
                    for (const int family : starts) {
                        ASSERT_EQ(families.start(family, file), 0) << family;
                    }
                    ASSERT_TRUE(std::filesystem::exists(file));  // nothing is left of the round before
                    ZPService* const service = families.createService();
                    if (polling == 1) {
                        EXPECT_EQ(Families::connect(service, "10", "30"), 0);
                    }
                    for (const int family : stops) {
                        ASSERT_EQ(families.stop(family), 0) << family;
                    }
                    families.destroyService(service);
                    ASSERT_EQ(threads.started, threads.ended);
                    std::filesystem::remove("state/resume.xml");
                }
            }
        }
        ASSERT_FALSE(Library::isLoaded());
    }
    EXPECT_EQ(threads.started, 24 * 24);
}

// The sanitizers have their own use of memory; the address sanitizer finds the same by itself.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST(Orders, UnloadAfterARefusedConfigurationLeavesNothing) {
    const support::Workspace workspace;
    agent::AgentHost host;
    const auto heapAfter = [&](int rounds) {
        while (rounds-- > 0) {
            const Library library;
            Families families(library, host.serviceAgent(), workspace);
            workspace.write("config.xml", "no XML");
            EXPECT_EQ(families.start(Families::rsm), -1);
        }
        const auto usage = ::mallinfo2();
        return usage.uordblks + usage.hblkhd;
    };
    const std::size_t before = heapAfter(3);
    EXPECT_LT(heapAfter(10), before + 100000);
}
#endif

}  // namespace
