// Which files belong to a log, and in which order.
#include "LogFiles.h"
#include "support/Rows.h"
#include "support/Shell.h"
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

    static std::string files(const std::vector<std::string>& named, const char* zone = "UTC") {
        std::string text;
        LogFiles files(named, TimeZone::named(zone));
        for (std::vector<LogFile> part; !(part = files.older()).empty();) {
            for (auto file = part.rbegin(); file != part.rend(); ++file) {
                text = file->path + (text.empty() ? "" : " ") + text;
            }
        }
        return text;
    }

    support::Workspace workspace;
};

class LogFilesTest : public testing::Test, protected LogFolder {};

TEST_F(LogFilesTest, ArchiveNames) {
    for (const char* const name :
         {"k2026_3_1_10_5_9.xml", "k2026_12_31_23_59_59.xml", "a/b2026_3_1_10_5_912.xml",
          "2026_3_1_0_0_0.xml", "k52026_3_1_0_0_04.xml", ".2026_3_1_0_0_0.xml", "k2026_3_1_10_5_9.xml.gz"}) {
        EXPECT_TRUE(Archives::isArchive(name)) << name;
    }
    for (const char* const name :
         {"k.xml", "k2026_3_1_10_5.xml", "k2026_13_1_10_5_9.xml", "k2026_2_30_10_5_9.xml",
          "k2026_3_1_24_5_9.xml", "k2026_3_1_10_60_9.xml", "k2026_3_1_10_5_9.gz", "k2026_3_1_10_5_9.log",
          "k2026_3_1_10_5_.xml", "k026_3_1_10_5_9.xml", "k2026_3_1_10_5_9999999999999.xml",
          "2026_3_1_0_0_0.xml/k"}) {
        EXPECT_FALSE(Archives::isArchive(name)) << name;
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

// Their names say which clock time it was, but not in which of the two hours.
TEST_F(LogFilesTest, TheHourThatComesTwiceIsOrderedByTheAgeOfItsFiles) {
    std::string expected;
    for (const auto& [end, written] : {std::pair("2_10_0", "00:10"), std::pair("2_50_0", "00:50"),
                                       std::pair("2_20_0", "01:20"), std::pair("2_55_0", "01:55")}) {
        const std::string name = std::string("k2026_10_25_") + end + ".xml";
        workspace.write("log/" + name, "text that bears no time");
        ASSERT_EQ(support::shell(workspace, "touch -d '2026-10-25 " + std::string(written) + "Z' log/" + name)
                      .status,
                  0);
        expected += name + " ";
    }
    EXPECT_EQ(files({"k.xml"}, "CET-1CEST,M3.5.0,M10.5.0/3"), expected + "k.xml");
}

// As after a correction of the clock: the name that fits to the beginning of the next file is the one before it.
TEST_F(LogFilesTest, AClockThatWasSetBack) {
    make("k2026_3_1_9_10_0.xml", "9:0:0");
    make("k2026_3_1_9_50_0.xml", "9:10:0");
    make("k2026_3_1_9_20_0.xml", "9:50:0");  // to 9:15 in it
    make("k2026_3_1_9_30_0.xml", "9:20:0");
    make("k.xml", "9:30:0");
    EXPECT_EQ(files({"k.xml"}),
              "k2026_3_1_9_10_0.xml k2026_3_1_9_50_0.xml k2026_3_1_9_20_0.xml "
              "k2026_3_1_9_30_0.xml k.xml");
}

TEST_F(LogFilesTest, WhatIsBeingCompressedIsReadOnce) {
    make("k2026_3_1_9_0_5.xml", "9:0:0");
    make("k2026_3_1_9_0_5.xml.gz");
    make("k2026_3_1_8_0_5.xml.gz");
    EXPECT_EQ(files({"k.xml"}), "k2026_3_1_8_0_5.xml.gz k2026_3_1_9_0_5.xml k.xml");
}

TEST_F(LogFilesTest, ALogThatHasJustBecomeAnArchiveIsReadOnce) {
    make("k.xml", "9:0:0");
    const auto log = platform::File::open("k.xml", platform::OpenMode::Read);
    std::filesystem::rename("k.xml", "k2026_3_1_9_0_5.xml");
    make("k2026_3_1_8_0_5.xml", "8:0:0");
    Archives archives(TimeZone::named("UTC"));
    archives.addOf("k.xml");
    const auto isLog = [&](const platform::File& file) { return file.isSameFile(log); };
    EXPECT_EQ(archives.older(isLog)->path, "k2026_3_1_8_0_5.xml");
    EXPECT_FALSE(archives.older(isLog));
}

}  // namespace
}  // namespace logreader
