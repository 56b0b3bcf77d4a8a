// Which files belong to a log, and in which order.
#include "LogFiles.h"
#include "support/Rows.h"
#include "support/Workspace.h"

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace logreader {
namespace {

struct LogFolder {
    LogFolder() { std::filesystem::current_path(workspace.path("log")); }
    LogFolder(const LogFolder&) = delete;
    LogFolder& operator=(const LogFolder&) = delete;
    ~LogFolder() { std::filesystem::current_path("/"); }

    /// An empty file, or one whose first entry was written at this time of 1 March 2026.
    void make(const std::string& name, const std::string& time = {}) const {
        workspace.write("log/" + name, time.empty() ? "" : "Date:2026-3-1 Time:" + time + " :: x\n");
    }

    static std::string files(const std::vector<std::string>& named) {
        std::string text;
        for (const LogFile& file : filesFor(named)) {
            text += (text.empty() ? "" : " ") + file.path;
        }
        return text;
    }

    support::Workspace workspace;
};

class LogFilesTest : public testing::Test, protected LogFolder {};

TEST_F(LogFilesTest, ArchiveNames) {
    for (const char* const name :
         {"k2026_3_1_10_5_9.xml", "k2026_12_31_23_59_59.xml", "a/b2026_3_1_10_5_912.xml",
          "2026_3_1_0_0_0.xml", "k52026_3_1_0_0_04.xml", ".2026_3_1_0_0_0.xml"}) {
        EXPECT_TRUE(isArchiveName(name)) << name;
    }
    for (const char* const name :
         {"k.xml", "k2026_3_1_10_5.xml", "k2026_13_1_10_5_9.xml", "k2026_2_30_10_5_9.xml",
          "k2026_3_1_24_5_9.xml", "k2026_3_1_10_60_9.xml", "k2026_3_1_10_5_9.xml.gz", "k2026_3_1_10_5_9.log",
          "k2026_3_1_10_5_.xml", "k026_3_1_10_5_9.xml", "k2026_3_1_10_5_9999999999999.xml",
          "2026_3_1_0_0_0.xml/k"}) {
        EXPECT_FALSE(isArchiveName(name)) << name;
    }
}

TEST_F(LogFilesTest, FindsTheArchivesOfTheLogAndOnlyThose) {
    for (const char* const name :
         {"k.xml", "k2026_3_1_10_5_9.xml", "k-old2026_3_1_10_5_9.xml", "kk2026_3_1_10_5_9.xml",
          "k2026_3_1.xml", "K2026_3_1_10_5_9.xml", "k12026_3_1_10_5_9.xml", "k1.xml"}) {
        make(name);
    }
    EXPECT_EQ(files({"k.xml"}), "k2026_3_1_10_5_9.xml k.xml");
    EXPECT_EQ(files({"k1.xml"}), "k12026_3_1_10_5_9.xml k1.xml");
    EXPECT_EQ(files({"../log/k.xml"}), "../log/k2026_3_1_10_5_9.xml ../log/k.xml");
    EXPECT_EQ(files({"k2026_3_1_10_5_9.xml"}), "k2026_3_1_10_5_9.xml");
    EXPECT_EQ(files({"absent.xml"}), "absent.xml");
}

// The last "." of a path may lie in the name of a directory.
TEST_F(LogFilesTest, LogsWithoutADot) {
    for (const char* const name :
         {"agentlog", "agentlog2026_3_1_10_5_9.xml", ".2026_3_1_10_5_9.xml", "2026_3_1_9_5_9.xml"}) {
        make(name);
    }
    EXPECT_EQ(files({"agentlog"}), "agentlog2026_3_1_10_5_9.xml agentlog");
    EXPECT_EQ(files({"../log/agentlog"}), ".2026_3_1_10_5_9.xml ../log/agentlog");
    EXPECT_EQ(files({"./agentlog"}), "2026_3_1_9_5_9.xml ./agentlog");
}

struct OrderRow {
    support::RowName name;
    /// In order: end of the name, first entry.
    std::vector<std::pair<const char*, const char*>> archives;
};

const support::Rows<OrderRow> orderRows(
    "LogFiles/Order",
    {
        {"by number, not by letters", {{"9_5_9", ""}, {"9_50_1", ""}, {"9_50_10", ""}, {"10_4_0", ""}}},
        {"by their first entries", {{"9_0_5", "8:0:0"}, {"9_0_50", "9:0:5"}, {"9_1_0", "9:0:50"}}},
        {"counters of one second",
         {{"9_0_5", "8:0:0"}, {"9_0_51", "9:0:5"}, {"9_0_52", "9:0:5"}, {"9_0_510", "9:0:5"}}},
        {"second 1 with counters, then seconds 11 and 12",
         {{"9_0_1", "8:0:0"},
          {"9_0_11", "9:0:1"},
          {"9_0_12", "9:0:1"},
          {"9_0_111", "9:0:1"},
          {"9_0_121", "9:0:12"}}},
        {"the last of a second is full later", {{"9_0_5", "8:0:0"}, {"9_0_51", "9:0:5"}, {"9_0_7", "9:0:5"}}},
        {"second 51, not counter 1 of second 5",
         {{"9_0_6", "8:0:0"}, {"9_0_51", "9:0:6"}, {"9_1_2", "9:0:51"}}},
    },
    [](const OrderRow& row) {
        const LogFolder folder;
        folder.make("k.xml", "7:0:0");  // the clock was set back: the log file comes last all the same
        std::string expected;
        std::vector<std::string> backwards = {"k.xml"};
        for (const auto& [end, first] : row.archives) {
            const std::string name = std::string("k2026_3_1_") + end + ".xml";
            folder.make(name, first);
            expected += name + " ";
            backwards.insert(backwards.begin(), name);
        }
        EXPECT_EQ(LogFolder::files({"k.xml"}), expected + "k.xml");
        EXPECT_EQ(LogFolder::files(backwards), expected + "k.xml") << "all of them named";
    });

TEST_F(LogFilesTest, ALogThatHasJustBecomeAnArchiveIsReadOnce) {
    make("k.xml", "9:0:0");
    auto log = platform::File::open("k.xml", platform::OpenMode::Read);
    std::filesystem::rename("k.xml", "k2026_3_1_9_0_5.xml");
    make("k2026_3_1_8_0_5.xml", "8:0:0");
    EXPECT_EQ(archivesOf("k.xml", log), std::vector<std::string>{"k2026_3_1_8_0_5.xml"});
}

}  // namespace
}  // namespace logreader
