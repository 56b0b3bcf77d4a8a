// The file logger: levels, entries, rotation, clean-up, starts and stops.
#include "logger/Logs.h"
#include "support/Replay.h"
#include "support/Rows.h"

#include <regex>
#include <string>

#include <gtest/gtest.h>

namespace {

using logs::configuration;
using logs::setting;
using support::Replay;
using support::RowName;
using support::Rows;
using support::Workspace;

/// Actions parted by commas, at second 0.
std::string atOnce(const std::string& actions) {
    return "0 " + std::regex_replace(actions, std::regex(","), "\n0 ") + "\n";
}

const std::string kStart = "clock 2026-03-01T10:00:00Z\n" + atOnce("route off,start logger config");

struct LevelRow {
    RowName name;
    const char* configured;
    const char* written;
};

const Rows<LevelRow> levelRows(
    "FileLogger/Levels",
    {
        {"trace", "trace", "|t|i|w|e|f|o|a|A"},
        {"info", "info", "|i|w|e|f|o|a|A"},
        {"warn", "warn", "|w|e|f"},
        {"error", "error", "|e|f"},
        {"force", "force", "|f"},
        {"another spelling", "Force", "|i|w|e|f|o|a|A"},
        {"audit", "audit", ""},
        {"absent", "", "|f"},
    },
    [](const LevelRow& row) {
        const Workspace workspace;
        const std::string all = setting("LogFilePath", "log/k.xml") + setting("LogLevel", row.configured);
        workspace.write("config", "<z>" + all + "<ListnerSet><FileListner>1</FileListner></ListnerSet></z>");
        const Replay replay(
            workspace, kStart + atOnce("log trace t,log info i,log warn w,log error e,log force f,log 77 o,"
                                       "log audit a,audit A"));
        EXPECT_EQ(logs::withoutStamps(workspace.read("log/k.xml")), row.written);
        EXPECT_EQ(replay.standardOutput(), "tiwefoaA");
    });

TEST(FileLogger, FurtherStartsCountFromTheNextMessageOn) {
    const Workspace workspace;
    workspace.write("config", configuration());
    const Replay replay(workspace, kStart + atOnce("log info a,write config \"" +
                                                   configuration(setting("LogLevel", "error")) +
                                                   "\",start logger config,log info b,log error c"));
    EXPECT_EQ(logs::withoutStamps(workspace.read("log/k.xml")), "|a|c");
}

struct ZoneRow {
    RowName name;
    const char* zone;
    const char* clock;
    const char* stamp;
};

const Rows<ZoneRow> localTimeRows(
    "FileLogger/LocalTime",
    {
        {"GMT", "UTC", "2008-03-03T09:07:05Z", "Date:2008-3-3 Time:9:7:5 :: "},
        {"ahead", "IST-5:30", "2008-12-31T23:59:59Z", "Date:2009-1-1 Time:5:29:59 :: "},
        {"behind", "EST5", "2009-01-01T04:00:00Z", "Date:2008-12-31 Time:23:0:0 :: "},
        {"winter's end", "CET-1CEST,M3.5.0,M10.5.0/3", "2026-03-29T00:59:59Z",
         "Date:2026-3-29 Time:1:59:59 :: "},
        {"summer's begin", "CET-1CEST,M3.5.0,M10.5.0/3", "2026-03-29T01:00:00Z",
         "Date:2026-3-29 Time:3:0:0 :: "},
    },
    [](const ZoneRow& row) {
        const Workspace workspace;
        workspace.write("config", configuration());
        const std::string clock = std::string("clock ") + row.clock + "\n";
        const Replay replay(workspace, clock + atOnce("route off,start logger config,log info a"), row.zone);
        EXPECT_EQ(workspace.read("log/k.xml"), std::string(row.stamp) + "a");
    });

TEST(FileLogger, MessagesOfAnyBytesAndLength) {
    std::string bytes = "%s%n%";
    for (int one = 1; one < 256; ++one) {
        bytes += one == '"' || one == '\\' || one == '\n' || one == '\r' ? 'x' : static_cast<char>(one);
    }
    const Workspace workspace;
    workspace.write("config", configuration());
    const std::string most(10239, 'y');
    const Replay replay(workspace, kStart + "0 log info \"" + bytes + "\"\n0 log info \"\"\n0 log info " +
                                       most + "z\n0 audit " + most + "\n0 log info null\n0 audit null\n");
    EXPECT_EQ(logs::withoutStamps(workspace.read("log/k.xml")), "|" + bytes + "||" + most + "|" + most);
    EXPECT_EQ(replay.call("log info null").at("result"), -1);
    EXPECT_EQ(replay.call("audit null").at("result"), -1);
    EXPECT_EQ(replay.countLogged(50, "Remote Detection LoggerLog: NULL message pointer 0"), 2);
}

struct RotationRow {
    RowName name;
    std::string settings;
    std::string actions;
    const char* files;
};

const std::string kLimit30 = setting("FileSize", "30");  // an entry of one character
const std::string kAb = "0 log info a\n0 log info b\n";
const Rows<RotationRow> rotationRows(
    "FileLogger/Rotation",
    {
        {"a name each second", kLimit30, kAb + "1 log info c\n",
         "log/k.xml |c/; log/k2026_3_1_10_0_0.xml |a; log/k2026_3_1_10_0_1.xml |b/"},
        {"two entries a file", setting("FileSize", "31"), kAb + "2 log info c\n",
         "log/k.xml |c/; log/k2026_3_1_10_0_2.xml |a|b"},
        {"the first entry of a file ends its line", setting("FileSize", "60"),
         kAb + "3 log info c\n4 log info d\n", "log/k.xml |c/|d; log/k2026_3_1_10_0_3.xml |a|b"},
        // The counter grows in one second and goes back with the next plain name.
        {"a counter within a second", kLimit30,
         kAb + "0 log info c\n0 log info d\n7 log info e\n7 log info f\n",
         "log/k.xml |f/; log/k2026_3_1_10_0_0.xml |a; log/k2026_3_1_10_0_01.xml |b/; "
         "log/k2026_3_1_10_0_02.xml |c/; "
         "log/k2026_3_1_10_0_7.xml |d/; log/k2026_3_1_10_0_71.xml |e/"},
        {"a name that is taken", kLimit30, "0 write log/k2026_3_1_10_0_0.xml x\n" + kAb,
         "log/k.xml |b/; log/k2026_3_1_10_0_0.xml x; log/k2026_3_1_10_0_01.xml |a"},
        {"FileSize 0", setting("FileSize", "0"), kAb,
         "log/k.xml |b/; log/k2026_3_1_10_0_0.xml ; log/k2026_3_1_10_0_01.xml |a/"},
        {"FileSize negative", setting("FileSize", "-5"), "0 log info a\n",
         "log/k.xml |a/; log/k2026_3_1_10_0_0.xml "},
        {"FileSize no number", setting("FileSize", "many"), "0 log info a\n",
         "log/k.xml |a/; log/k2026_3_1_10_0_0.xml "},
        {"FileSize beyond 32 bits", setting("FileSize", "99999999999"), kAb, "log/k.xml |a|b"},
        {"no extension", kLimit30 + setting("LogFilePath", "log/agent"), kAb,
         "log/agent |b/; log/agent2026_3_1_10_0_0.xml |a"},
        {"no extension but a dot", kLimit30 + setting("LogFilePath", "./log/agent"), kAb,
         "2026_3_1_10_0_0.xml |a; log/agent |b/"},
        {"two dots", kLimit30 + setting("LogFilePath", "log/a.b.txt"), kAb,
         "log/a.b.txt |b/; log/a.b2026_3_1_10_0_0.xml |a"},
        {"backslash", kLimit30 + setting("LogFilePath", "log\\k.xml"), kAb,
         "log/k.xml |b/; log/k2026_3_1_10_0_0.xml |a"},
    },
    [](const RotationRow& row) {
        const Workspace workspace;
        workspace.write("config", configuration(row.settings));
        const Replay replay(workspace, kStart + row.actions);
        EXPECT_EQ(logs::files(workspace), row.files) << replay.printed();
        EXPECT_FALSE(replay.logged(250, "\n Error renaming file"));
    });

TEST(FileLogger, FollowsAReplacedDirectoryInTheNextSecond) {
    const Workspace workspace;
    workspace.write(
        "config",
        configuration("<TunnelMessags><OpenMessage><Message>open</Message></OpenMessage></TunnelMessags>"
                      "<ListnerSet><TunnelListner>1</TunnelListner></ListnerSet>"
                      "<Script>mv log old &amp;&amp; mkdir log</Script>"));
    const Replay replay(workspace, kStart + "1 audit open\n2 log info a\n");
    EXPECT_EQ(logs::files(workspace), "log/k.xml |a; old/k.xml |open") << replay.printed();
}

struct OldFileRow {
    RowName name;
    const char* path;
    const char* days;
    const char* file;
    const char* age;  ///< days
    bool stays;
};

const Rows<OldFileRow> oldFileRows(
    "FileLogger/OldFiles",
    {
        {"30 days and 23 hours", "log/k.xml", "30", "log/k2026_1_1_1_1_1.xml", "30.95833", true},
        {"31 days", "log/k.xml", "30", "log/k2026_1_1_1_1_1.xml", "31", false},
        {"the log file itself", "log/k.xml", "30", "log/k.xml", "31", false},
        {"base name in the middle", "log/k.xml", "30", "log/old-k.xml", "31", false},
        {"extension in the middle", "log/k.xml", "30", "log/k.xml.bak", "31", false},
        {"no extension", "log/k.xml", "30", "log/k-old.txt", "99", true},
        {"another name", "log/k.xml", "30", "log/other.xml", "99", true},
        {"in a directory", "log/k.xml", "30", "log/k.xml.d/k.xml", "99", true},
        {"from the future", "log/k.xml", "30", "log/k2.xml", "-99", true},
        {"no whole day", "log/k.xml", "0", "log/k2.xml", "0.95833", true},
        {"days no number", "log/k.xml", "many", "log/k2.xml", "1", false},
        {"backslash", "log\\k.xml", "30", "log/k2.xml", "31", false},
        {"both separators", "./log\\k.xml", "30", "log/k2.xml", "31", false},
        {"extension in the directory", "a.xml.d/k.log", "30", "a.xml.d/k.log1", "31", false},
        {"a log without extension", "log/k.log", "30", "log/k2.xml", "99", true},
        {"no directory", "k.xml", "30", "k2.xml", "99", true},
        {"no directory, the log itself", "k.xml", "30", "k.xml", "99", true},
    },
    [](const OldFileRow& row) {
        const Workspace workspace;
        const std::string file = row.file;
        workspace.write(
            "config", configuration(setting("LogFilePath", row.path) + setting("LogRevisionDays", row.days)));
        const Replay replay(
            workspace, atOnce("write " + file + " old,age " + file + " " + row.age + ",start logger config"));
        EXPECT_EQ(workspace.read(file), row.stays ? "old" : "") << replay.printed();
        EXPECT_EQ(replay.countLogged(250, "\n File successfully deleted."), row.stays ? 0 : 1);
    });

/// A board without a clock battery writes its first log in 1970, and then its clock is set.
TEST(FileLogger, FilesOfAnUnsetClockCountFromTheFirstCleanUpOn) {
    const Workspace workspace;
    workspace.write("config", configuration());
    const std::string start = "start logger config\n", stop = "stop logger\n";
    const Replay replay(
        workspace, "clock 1970-01-01T00:00:00Z\n0 write log/k0.xml a\n0 age log/k0.xml 0\n1 " + start +
                       "2 log info a\n3 " + stop + "4 clock-step 1772359200\n15 " + start + "16 " + stop +
                       "17 show log/k0.xml\n2592000 " + start + "2592001 " + stop +
                       "2592002 show log/k0.xml\n2678416 " + start + "2678417 " + stop);
    EXPECT_EQ(logs::files(workspace), "log/k.xml ");
    EXPECT_EQ(replay.countLogged(250, "\n File successfully deleted."), 2) << replay.printed();
}

}  // namespace
