// Following a log while it grows, is rotated, replaced and emptied.
#include "Follower.h"
#include "support/Workspace.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

namespace logreader {
namespace {

class FollowerTest : public testing::Test {
  protected:
    ~FollowerTest() override { std::fclose(output); }

    void append(const std::string& bytes) const {
        std::ofstream(path, std::ios::app | std::ios::binary) << bytes;
    }
    void entry(const std::string& text) const { append("Date:2026-3-1 Time:9:0:0 :: " + text); }
    void rotate(const std::string& end) const {
        std::filesystem::rename(path, workspace.path("log/k2026_3_1_" + end + ".xml"));
    }
    Follower follower() { return {path, platform::File::open(path, platform::OpenMode::Read), listing}; }

    /// What was printed since the last call, without the times, entries parted by blanks.
    std::string printed() {
        listing.flush();
        std::istringstream lines(workspace.read("printed").substr(seen));
        std::string text;
        for (std::string line; std::getline(lines, line); seen += line.size() + 1) {
            text += (text.empty() ? "" : " ") + line.substr(line.find(' ') + 1);
        }
        return text;
    }

    support::Workspace workspace;
    std::string path = workspace.path("log/k.xml").string();
    std::FILE* output = std::fopen(workspace.path("printed").c_str(), "w");
    std::size_t seen = 0;
    Listing listing{TimeZone::named("UTC"), Selection({}, {}), EntryWriter(false, TimeZone::named("UTC")),
                    std::nullopt, output};
};

TEST_F(FollowerTest, PrintsAnEntryOnceItsEndIsKnownOrNothingFollows) {
    Follower following = follower();
    following.look();  // there is no file yet
    entry("a");
    following.look();
    EXPECT_EQ(printed(), "");
    following.look();
    EXPECT_EQ(printed(), "a");
    entry("b");
    entry("c\n");
    following.look();
    EXPECT_EQ(printed(), "b");
    append("Date:2026-3-1 Ti");
    following.look();
    EXPECT_EQ(printed(), "");
    append("me:9:0:0 :: d");
    following.look();
    EXPECT_EQ(printed(), "c");
    following.look();
    EXPECT_EQ(printed(), "d");
    following.look();
    EXPECT_EQ(printed(), "");
}

TEST_F(FollowerTest, OverRotations) {
    entry("a");
    Follower following = follower();
    following.look();
    entry("b");
    rotate("9_0_0");
    following.look();
    EXPECT_EQ(printed(), "a");
    entry("c");
    following.look();
    EXPECT_EQ(printed(), "b");
    // Three within one look, two of them in one second.
    entry("d");
    rotate("9_0_01");
    entry("e\n");
    rotate("9_0_02");
    entry("f\n");
    entry("g");
    rotate("9_0_3");
    entry("h");
    following.look();
    EXPECT_EQ(printed(), "c d e f g");
    following.look();
    EXPECT_EQ(printed(), "h");
}

TEST_F(FollowerTest, ALogThatIsDeletedReplacedOrEmptied) {
    testing::internal::CaptureStderr();
    entry("a");
    entry("b");
    Follower following = follower();
    following.look();
    std::filesystem::remove(path);
    following.look();
    EXPECT_EQ(printed(), "a b");
    entry("c");
    following.look();
    following.look();
    EXPECT_EQ(printed(), "c");
    std::ofstream(path, std::ios::trunc).close();
    following.look();
    entry("d");
    following.look();
    following.look();
    EXPECT_EQ(printed(), "d");
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_NE(said.find("was replaced"), std::string::npos) << said;
    EXPECT_NE(said.find("was emptied"), std::string::npos) << said;
}

}  // namespace
}  // namespace logreader
