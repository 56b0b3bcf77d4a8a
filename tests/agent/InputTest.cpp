#include "sim/input/Input.h"
#include "sim/time/RealClock.h"

#include <array>
#include <csignal>
#include <string_view>

#include <gtest/gtest.h>
#include <unistd.h>

namespace sim {
namespace {

using std::chrono::milliseconds;

class InputTest : public testing::Test {
  protected:
    InputTest() { EXPECT_EQ(::pipe(ends_.data()), 0); }
    ~InputTest() override {
        ::close(ends_[0]);
        closeWriter();
    }
    void type(std::string_view text) {
        EXPECT_EQ(::write(ends_[1], text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }
    void closeWriter() {
        if (ends_[1] >= 0) {
            ::close(std::exchange(ends_[1], -1));
        }
    }
    int reader() const { return ends_[0]; }

  private:
    std::array<int, 2> ends_ = {};
};

TEST_F(InputTest, LinesAndEnd) {
    Input input(reader(), nullptr);
    EXPECT_FALSE(input.wait(milliseconds(0)));
    type("one\n\ntw");
    EXPECT_TRUE(input.wait(std::chrono::microseconds::max()));
    EXPECT_EQ(input.takeLine(), "one");
    EXPECT_EQ(input.takeLine(), "");
    EXPECT_FALSE(input.hasLine());
    type("o");
    closeWriter();
    while (!input.hasLine()) {
        ASSERT_TRUE(input.wait(std::chrono::microseconds::max()));
    }
    EXPECT_TRUE(input.isOpen());
    EXPECT_EQ(input.takeLine(), "two");
    EXPECT_FALSE(input.isOpen());
    EXPECT_FALSE(input.wait(milliseconds(1)));
}

TEST_F(InputTest, RealClockWaitsAndIsInterrupted) {
    Input input(reader(), nullptr);
    RealClock clock(std::chrono::seconds(5), input);
    const auto before = std::chrono::steady_clock::now();
    EXPECT_TRUE(clock.advance(milliseconds(30), true));
    EXPECT_GE(std::chrono::steady_clock::now() - before, milliseconds(25));
    EXPECT_EQ(clock.now(), milliseconds(30));
    EXPECT_EQ(clock.wall(), milliseconds(5030));
    type("x\n");
    EXPECT_TRUE(clock.advance(milliseconds(31), false));
    EXPECT_FALSE(clock.advance(kNever, true));
    EXPECT_GE(clock.now(), milliseconds(31));
    std::raise(SIGINT);
    EXPECT_FALSE(clock.advance(kNever, true));
    EXPECT_TRUE(input.stopRequested());
}

}  // namespace
}  // namespace sim
