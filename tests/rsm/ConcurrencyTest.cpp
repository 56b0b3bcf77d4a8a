// The module among several threads, on the real clock.
#include "Library.h"
#include "lib/AgentHost.h"
#include "lib/Observer.h"

#include <atomic>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace {

/// Counts the module's threads.
struct Threads final : agent::Observer {
    void onThreadStart(const std::string& /*name*/, std::int8_t result) override {
        if (result == 0) {
            ++started;
            most = std::max<int>(most, ++running);  // starts never overlap
        }
    }
    void onThreadEnd(int /*result*/) override { --running; }
    void onThreadDestroyed(const std::string& /*name*/) override { --running; }
    std::atomic<int> started = 0;
    std::atomic<int> running = 0;
    std::atomic<int> most = 0;
};

/// Calls from four threads at once, in pairs of a connect and a disconnect.
void call(ZPService* service, const std::string& rate, int pairs) {
    std::atomic<int> failures = 0;
    std::vector<std::thread> callers;
    for (int i = 0; i < 4; ++i) {
        callers.emplace_back([&] {
            for (int pair = 0; pair < pairs; ++pair) {
                failures += Families::connect(service, "1", rate) != 0;
                failures += sim::callService(*service, "disconnect", {{"memberName", "a"}}).result != 0;
            }
        });
    }
    for (std::thread& caller : callers) {
        caller.join();
    }
    EXPECT_EQ(failures, 0);
}

TEST(Concurrency, ConnectsAndDisconnectsBesideThePollingThread) {
    const support::Workspace workspace;
    Threads threads;
    agent::AgentHost host({&threads, nullptr, nullptr});
    {
        const Library library;
        Families families(library, host.serviceAgent(), workspace);
        ASSERT_EQ(families.start(Families::rsm) + families.start(Families::webService), 0);
        ZPService* const service = families.createService();
        call(service, "90", 250);  // its thread is over at once unless the next connect is there before
        EXPECT_GE(threads.started, 1);
        call(service, "1", 1250);  // ten thousand calls beside one thread that polls every second
        families.destroyService(service);
        EXPECT_EQ(families.stop(Families::rsm), 0);  // waits for the poll after the last disconnect
        EXPECT_EQ(threads.running, 0);
        EXPECT_EQ(threads.most, 1);
    }
    EXPECT_FALSE(Library::isLoaded());
}

}  // namespace
