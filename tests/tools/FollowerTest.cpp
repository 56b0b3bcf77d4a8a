// Following a log while it grows, is rotated, replaced and emptied.
#include "Follower.h"
#include "LogFiles.h"
#include "support/Shell.h"
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
    void entry(const std::string& text, const std::string& time = "9:0:0") const {
        append("Date:2026-3-1 Time:" + time + " :: " + text);
    }
    void rotate(const std::string& end) const {
        std::filesystem::rename(path, workspace.path("log/k2026_3_1_" + end + ".xml"));
    }
    Follower follower() {
        LogFiles files({path}, zone);
        return {files.older().back(), files.archives(), zone, listing, false};
    }
    void compress(const std::string& end) const {
        ASSERT_EQ(support::shell(workspace, "gzip log/k2026_3_1_" + end + ".xml").status, 0);
    }

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
    TimeZone zone = TimeZone::named("UTC");
    Listing listing{zone, Selection({}, {}), EntryWriter(Form::shown, zone),
                    Printing{{}, false, 0, output, nullptr}};
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

// What is new is told by the files: names and times of old ones may lie behind those of the new ones.
TEST_F(FollowerTest, OverRotationsAfterTheClockWasSetBack) {
    for (const char* const end : {"9_10_0", "9_20_0", "9_30_0"}) {
        entry("old", "9:5:0");
        rotate(end);
    }
    entry("a", "9:30:0");
    Follower following = follower();
    following.look();
    entry("b", "9:30:1");
    rotate("9_40_0");
    entry("c", "9:40:0");
    rotate("9_0_0");
    entry("d", "9:0:0");
    rotate("9_15_0");
    entry("e", "9:15:0");
    following.look();
    following.look();
    EXPECT_EQ(printed(), "a b c d e");
    compress("9_20_0");  // an old one under a new name
    entry("f", "9:15:1");
    rotate("8_0_0");
    compress("8_0_0");  // what is being followed, too
    entry("g", "8:0:0");
    rotate("7_0_0");
    compress("7_0_0");
    entry("h", "7:0:0");
    following.look();
    following.look();
    EXPECT_EQ(printed(), "f g h");
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
