// The scenarios of the examples folder: they run, always alike, and poll to the second.
#include "support/Replay.h"

#include <fstream>
#include <iterator>
#include <map>

#include <gtest/gtest.h>

namespace {

std::string contents(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

support::Replay replayExample(const std::filesystem::path& path) {
    const support::Workspace workspace;
    workspace.write("zephan-config.xml", contents(EXAMPLES "/zephan-config.xml"));
    return {workspace, contents(path)};
}

TEST(Examples, AllRunAlike) {
    const std::map<std::string, std::string> polls = {
        {"connect-runs-out", "35..605/30"},
        {"connect-45-seconds", "50..455/45"},
        {"connect-90-seconds", ""},
        {"disconnect-in-the-middle", "35..125/30"},
        {"second-connect", "35..125/30 145..425/20"},
        {"enterprise-refuses", "35..125/30"},
        {"kill-and-resume", "30..210/30 330..600/30"},
        {"schedule-during-connect", "40..190/30 210..410/20"},
        {"schedule-survives-restart", "82830..83100/30"},
        {"service-visit", "20..365/15"},
    };
    std::size_t known = 0;
    for (const auto& entry : std::filesystem::directory_iterator(EXAMPLES)) {
        if (entry.path().extension() != ".scenario") {
            continue;
        }
        SCOPED_TRACE(entry.path().filename());
        const support::Replay first = replayExample(entry.path());
        EXPECT_EQ(first.exitStatus(), 0) << first.printed();
        EXPECT_EQ(first.bytes(), replayExample(entry.path()).bytes());
        EXPECT_FALSE(first.all("thread-start").empty());
        if (const auto expected = polls.find(entry.path().stem().string()); expected != polls.end()) {
            EXPECT_EQ(first.polls(), expected->second);
            ++known;
        }
        const auto updates = first.all("update-asset");
        ASSERT_FALSE(updates.empty());
        EXPECT_EQ(support::property(updates.back(), "RSM_MODE"), "NOT_ACTIVE");
    }
    EXPECT_EQ(known, polls.size());
}

}  // namespace
