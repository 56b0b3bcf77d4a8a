#include "lib/AgentHost.h"
#include "platform/agent/Logging.h"
#include "support/Lines.h"

#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

namespace agent {
namespace {

TEST(Logging, AnyLength) {
    support::Lines lines;
    const AgentHost host({&lines, nullptr, nullptr});
    for (const std::size_t length : {0U, 1U, 511U, 512U, 513U, 100000U}) {
        KRXLog(level::kForce, "%s", std::string(length, 'x').c_str());
        EXPECT_EQ(lines.take(), "250 " + std::string(length, 'x') + "|");
    }
}

TEST(Logging, OneHostAtATime) {
    const AgentHost host;
    EXPECT_THROW(AgentHost(), std::logic_error);
}

}  // namespace
}  // namespace agent
