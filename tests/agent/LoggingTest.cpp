#include "lib/AgentHost.h"
#include "lib/Observer.h"
#include "platform/agent/Logging.h"

#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace agent {
namespace {

class Lines final : public Observer {
  public:
    void onLog(int level, std::string_view text) override {
        const std::lock_guard lock(mutex_);
        lines_.push_back(std::to_string(level) + " " + std::string(text));
    }
    std::vector<std::string> take() { return std::exchange(lines_, {}); }

  private:
    std::mutex mutex_;
    std::vector<std::string> lines_;
};

std::vector<std::string> hooked;
int depth = 0;

/// Logs from inside the hook, as a logger does that fails to write.
std::int8_t reentering(std::uint8_t level, const char* message) {
    hooked.push_back(std::to_string(level) + " " + message);
    if (++depth < 3) {
        KRXLog(level::kError, "inside %d", depth);
    }
    --depth;
    return 0;
}

TEST(Logging, AnyLength) {
    Lines lines;
    const AgentHost host({&lines, nullptr, nullptr});
    for (const std::size_t length : {0U, 1U, 511U, 512U, 513U, 100000U}) {
        KRXLog(level::kForce, "%s", std::string(length, 'x').c_str());
        EXPECT_EQ(lines.take(), std::vector<std::string>{"250 " + std::string(length, 'x')});
    }
}

TEST(Logging, HookMayReenter) {
    Lines lines;
    AgentHost host({&lines, nullptr, nullptr});
    KRXLogSetFunc(reentering);
    KRXLog(level::kWarn, "line");
    EXPECT_EQ(std::exchange(hooked, {}), (std::vector<std::string>{"40 line", "50 inside 1", "50 inside 2"}));
    host.setRouting(false);
    KRXLog(level::kWarn, "unrouted");
    host.setRouting(true);
    KRXLogSetFunc(nullptr);
    KRXLog(level::kWarn, "unhooked");
    EXPECT_TRUE(hooked.empty());
    EXPECT_EQ(lines.take(), (std::vector<std::string>{"40 line", "50 inside 1", "50 inside 2", "40 unrouted",
                                                      "40 unhooked"}));
}

TEST(Logging, AuditHook) {
    AgentHost host;
    EXPECT_EQ(host.audit("x"), -1);
    KRXLogSetAuditFunc([](const char* message) { return static_cast<std::int8_t>(*message); });
    EXPECT_EQ(host.audit("x"), 'x');
    KRXLogSetAuditFunc(nullptr);
    EXPECT_EQ(host.audit("x"), -1);
}

TEST(Logging, ManyThreads) {
    Lines lines;
    const AgentHost host({&lines, nullptr, nullptr});
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([i] {
            for (int j = 0; j < 100; ++j) {
                KRXLog(i, "%d", j);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(lines.take().size(), 400U);
}

TEST(Logging, OneHostAtATime) {
    const AgentHost host;
    EXPECT_THROW(AgentHost(), std::logic_error);
}

}  // namespace
}  // namespace agent
