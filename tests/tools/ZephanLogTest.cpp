// The program itself, on logs that the module wrote.
#include "logger/Logs.h"
#include "support/Replay.h"
#include "support/Rows.h"
#include "support/Shell.h"

#include <cstdio>
#include <fstream>
#include <nlohmann/json.hpp>
#include <re2/re2.h>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>

namespace {

struct Program {
    /// Runs the program in the workspace's directory: its standard output, and behind it "status N" with what
    /// it said to standard error unless N is 0.
    std::string run(const std::string& arguments) const {
        return output("TZ=UTC '" ZEPHAN_LOG "' </dev/null 2>said " + arguments);
    }

    std::string output(const std::string& command) const {
        const support::Run done = support::shell(workspace, command);
        return done.status == 0
                   ? done.printed
                   : done.printed + "status " + std::to_string(done.status) + " " + workspace.read("said");
    }

    static std::vector<std::string> linesOf(const std::string& text) {
        std::istringstream stream(text);
        std::vector<std::string> lines;
        for (std::string line; std::getline(stream, line);) {
            lines.push_back(line);
        }
        return lines;
    }

    support::Workspace workspace;
};

class ZephanLogTest : public testing::Test, protected Program {};

// Every message that went into the logger comes out once, in order: over archives of every second of a
// minute, with and without collisions, whichever way the log's path is spelled.
TEST_F(ZephanLogTest, ReadsBackWhatTheModuleWrote) {
    for (const char* const path : {"log/k.xml", "log/agentlog", "../log/agentlog", ".\\log\\k.5.xml"}) {
        for (const char* const size : {"0", "1", "100", "5000000"}) {
            const support::Workspace fresh;
            fresh.write("here/config", logs::configuration(logs::setting("LogFilePath", path) +
                                                           logs::setting("FileSize", size)));
            fresh.write("here/log/keep", "");
            std::string scenario = "clock 2026-03-01T09:00:00Z\n0 start logger config\n";
            std::vector<std::string> expected;
            for (int number = 0; number < 150; ++number) {
                const std::string text = "message " + std::to_string(number);
                // Four in the same second now and then, which makes collision counters up to 3.
                scenario += std::to_string(number - (number % 8 < 4 ? number % 4 : 0)) + " log info \"" +
                            text + (number % 3 == 0 ? "\\n" : "") + "\"\n";
                expected.push_back(text);
            }
            fresh.write("here/test.scenario", scenario);
            const std::string command =
                "cd '" + fresh.path("here").string() +
                "' && TZ=UTC '" KRX_AGENT_SIM "' replay test.scenario >/dev/null && '" ZEPHAN_LOG
                "' --log-zone UTC --grep '^message' --config config | cut -d ' ' -f 2-";
            EXPECT_EQ(linesOf(output(command)), expected) << path << ", size " << size;
        }
    }
}

TEST_F(ZephanLogTest, AnswersWhatHappenedLastNight) {
    workspace.write("zephan-config.xml",
                    (std::stringstream() << std::ifstream(EXAMPLES "/zephan-config.xml").rdbuf()).str());
    const support::Replay replay(
        workspace, (std::stringstream() << std::ifstream(EXAMPLES "/service-visit.scenario").rdbuf()).str());
    ASSERT_EQ(replay.exitStatus(), 0) << replay.printed();
    EXPECT_EQ(run("--config zephan-config.xml --grep 'tunnel|transfer|RSM_MODE =|Firmware'"),
              "2026-03-01T10:00:05Z RSM_MODE = FORCE_POLL_GRACE\n"
              "2026-03-01T10:00:30Z Remote tunnel opened by operator-7\n"
              "2026-03-01T10:00:30Z RSM_MODE = FORCE_POLL_ACTIVITY\n"
              "2026-03-01T10:03:20Z File transfer started: firmware.bin\n"
              "2026-03-01T10:03:50Z Remote tunnel closed by operator-7\n"
              "2026-03-01T10:04:20Z File transfer finished: firmware.bin\n"
              "2026-03-01T10:04:20Z RSM_MODE = FORCE_POLL_GRACE\n"
              "2026-03-01T10:04:21Z Firmware 2.1 installed\n"
              "2026-03-01T10:06:05Z RSM_MODE = NOT_ACTIVE\n");
}

const std::string kFirst = "2026-03-01T09:00:00Z first\n";
const std::string kSecond = "2026-03-01T09:00:01Z second\n      line\n";
const std::string kThird = "2026-03-01T09:00:02Z \\x1b[1mthird\\xff\n";

/// The first one cannot be read.
const std::string kOldArchives =
    "$(mkdir log/k2026_2_1_9_0_0.xml && echo 'Date:2026-2-1 Time:9:0:0 :: x' >log/k2026_2_2_9_0_0.xml) ";

struct OptionsRow {
    support::RowName name;
    std::string arguments;
    std::string expected;
};

const support::Rows<OptionsRow> optionsRows(
    "ZephanLog/Options",
    {
        {"whole log", "log/k.xml", "(no time) torn end\n" + kFirst + kSecond + kThird},
        {"since", "--since 2026-03-01T09:00:01 log/k.xml", kSecond + kThird},
        {"until", "--until 2026-03-01T09:00:01 log/k.xml", "(no time) torn end\n" + kFirst + kSecond},
        {"since and until a day", "--since 2026-03-01 --until 2026-03-01 log/k.xml",
         kFirst + kSecond + kThird},
        {"since and until a second", "--since 2026-03-01T09:00:01 --until 2026-03-01T09:00:01 log/k.xml",
         kSecond},
        {"grep", "--grep IR log/k.xml", "status 1 "},
        {"ignored case", "-ig IR log/k.xml", kFirst + kThird},
        {"grep over lines", "--grep '^  line|^first$' log/k.xml", kFirst + kSecond},
        {"grep but exclude", "-i --grep 'E$|T$' --exclude IRST log/k.xml", kSecond},
        {"last", "-n 2 log/k.xml", kSecond + kThird},
        {"last but exclude", "-n 2 --exclude third log/k.xml", kFirst + kSecond},
        {"last none", "--last 0 log/k.xml", "status 1 "},
        {"zone of the log and UTC", "--log-zone +09:00 --utc -n 1 log/k.xml",
         "2026-03-01T00:00:02Z \\x1b[1mthird\\xff\n"},
        {"zone of the log", "--log-zone +09:00 -n 1 log/k.xml",
         "2026-03-01T09:00:02+09:00 \\x1b[1mthird\\xff\n"},
        {"time outside the zone", "--zone -01:00 --since 8:00:02 --until 8:00:02 log/k.xml", "status 1 "},
        {"zone of both", "--zone -01:00 --since '2026-03-01 8:00:02' log/k.xml",
         "2026-03-01T08:00:02-01:00 \\x1b[1mthird\\xff\n"},
        {"JSON", "--json log/k.xml",
         R"({"time":null,"text":"torn end","file":"log/k.xml","offset":0,"id":"132e1b3b7f469dc9-0"})"
         "\n"
         R"({"time":"2026-03-01T09:00:00Z","text":"first","file":"log/k.xml","offset":9,"id":"132e1b3b7f469dc9-9"})"
         "\n"
         R"({"time":"2026-03-01T09:00:01Z","text":"second\n  line","file":"log/k.xml","offset":46,"id":"132e1b3b7f469dc9-46"})"
         "\n"
         R"({"time":"2026-03-01T09:00:02Z","text":"\u001b[1mthird\u00ff","file":"log/k.xml","offset":88,"id":"132e1b3b7f469dc9-88"})"
         "\n"},
        {"lines are last", "--lines 1 log/k.xml", kThird},
        {"newest first", "-r -S 2026-03-01T09:00:01 log/k.xml", kThird + kSecond},
        {"the last, newest first", "-rn 2 -U 2026-03-01T09:00:01 log/k.xml", kSecond + kFirst},
        {"the message alone", "-o cat -g first log/k.xml", "first\n"},
        {"short", "-o short -q --no-pager -g first log/k.xml", kFirst},
        {"context", "-C1 -g first log/k.xml", "(no time) torn end\n" + kFirst + kSecond},
        {"context apart", "-C 0 -g 'first|third' log/k.xml", kFirst + kThird},
        {"files", "--files log/k.xml",
         "2026-03-01T09:00:00Z  2026-03-01T09:00:02Z        3 entries         126 bytes  log/k.xml\n"},
        {"disk usage", "--disk-usage log/k.xml", "126 bytes in 1 file\n"},
        {"until before since", "-S 2026-03-02 -U 2026-03-01 log/k.xml",
         "status 1 zephan-log: --until lies before --since, so there is nothing to print\n"},
        {"levels", "-p 3 log/k.xml",
         "status 2 zephan-log: entries carry no levels, so there is no -p; --grep chooses by the message\n"
         "Try zephan-log --help.\n"},
        {"unknown letter", "-izz log/k.xml",
         "status 2 zephan-log: unknown option -z\nTry zephan-log --help.\n"},
        {"no number of entries", "-C3x log/k.xml",
         "status 2 zephan-log: not a number of entries: 3x\nTry zephan-log --help.\n"},
        {"value that does not belong", "--json=x log/k.xml",
         "status 2 zephan-log: no value belongs to option --json=x\nTry zephan-log --help.\n"},
        {"control characters in a name", "\"$(printf 'a\\033[1m\\nb')\"",
         "status 2 zephan-log: a\\x1b[1m\\x0ab: No such file or directory\n"},
        {"absent file among others", "absent log/k.xml -n 1",
         kThird + "status 2 zephan-log: absent: No such file or directory\n"},
        {"absent file and none of its entries", "-n 0 absent",
         "status 2 zephan-log: absent: No such file or directory\n"},
        {"disk usage of no file", "--disk-usage",
         "status 2 zephan-log: --files and --disk-usage take a FILE\nTry zephan-log --help.\n"},
        {"directory", "log", "status 2 zephan-log: log: not a regular file\n"},
        {"no configuration", "--config log/k.xml",
         "status 2 zephan-log: log/k.xml: not a configuration file that can be read\n"},
        {"until with follow", "--until now --follow log/k.xml",
         "status 2 zephan-log: --follow has no end, so there is no --until\nTry zephan-log --help.\n"},
        {"two files to follow", "--follow log/k.xml log/l.xml",
         "status 2 zephan-log: --follow takes one FILE\nTry zephan-log --help.\n"},
        {"no expression", "--grep '(' log/k.xml",
         "status 2 zephan-log: regular expression (: missing ): (\nTry zephan-log --help.\n"},
        {"negative number of entries", "-n -1 log/k.xml",
         "status 2 zephan-log: not a number of entries: -1\nTry zephan-log --help.\n"},
        {"option without its value", "--since",
         "status 2 zephan-log: no value for option --since\nTry zephan-log --help.\n"},
        {"unknown option", "--colour",
         "status 2 zephan-log: unknown option --colour\nTry zephan-log --help.\n"},
        {"standard input", "-g first <log/k.xml", kFirst},
        {"empty standard input", "-", "status 1 "},
        {"standard input that cannot be read", "-o cat log/k.xml - <log -g first",
         "first\nstatus 2 zephan-log: standard input: Is a directory\n"},
        {"old archives are not opened for the end", kOldArchives + "-n 1 log/k.xml", kThird},
        {"nor for what is new", kOldArchives + "--since 2026-03-01T09:00:02 log/k.xml", kThird},
        {"full device", "log/k.xml >/dev/full",
         "status 2 zephan-log: standard output: No space left on device\n"},
        {"files to a full device", "--files log/k.xml >/dev/full",
         "status 2 zephan-log: standard output: No space left on device\n"},
    },
    [](const OptionsRow& row) {
        const Program program;
        program.workspace.write(
            "log/k.xml",
            "torn end\nDate:2026-3-1 Time:9:0:0 :: \n first \nDate:2026-3-1 Time:9:0:1 :: second\n  line\n"
            "Date:2026-3-1 Time:9:0:2 :: \x1b[1mthird\xff");
        EXPECT_EQ(program.run(row.arguments), row.expected);
    });

TEST_F(ZephanLogTest, TimesGoOnThroughTheHourThatComesTwice) {
    workspace.write("log/k.xml",
                    "Date:2026-10-25 Time:2:50:0 :: summer\nDate:2026-10-25 Time:2:20:0 :: winter\n");
    EXPECT_EQ(run("--log-zone CET-1CEST,M3.5.0,M10.5.0/3 --utc log/k.xml"),
              "2026-10-25T00:50:00Z summer\n2026-10-25T01:20:00Z winter\n");
}

// The id of an entry is the key under which a collector knows it.
TEST_F(ZephanLogTest, IdsStayWhereverTheFileLies) {
    const std::string entry = "Date:2026-3-1 Time:9:0:0 :: same";
    workspace.write("log/k2026_3_1_9_0_0.xml", entry);
    workspace.write("log/k2026_3_1_9_0_01.xml", entry);
    workspace.write("log/k.xml", entry + "\n" + entry);
    const auto ids = [this](const std::string& files) {
        return output("'" ZEPHAN_LOG "' --json " + files + " | sed 's/.*\"id\":\"//; s/\"}//'");
    };
    const std::vector<std::string> before = linesOf(ids("log/k.xml"));
    ASSERT_EQ(before.size(), 4U);
    EXPECT_EQ(std::set<std::string>(before.begin(), before.end()).size(), 4U);
    EXPECT_EQ(linesOf(ids("-n 1 log/k.xml")).back(), before.back());
    EXPECT_EQ(output("mv log/k.xml log/k2026_3_1_9_0_02.xml && gzip log/k2026_3_1_9_0_01.xml"), "");
    workspace.write("log/k.xml", "");
    EXPECT_EQ(linesOf(ids("log/k.xml")), before);
    EXPECT_EQ(linesOf(ids("- <log/k2026_3_1_9_0_0.xml")).front(), before.front());
}

TEST_F(ZephanLogTest, ACursorGoesOnBehindTheLastEntryPrinted) {
    const std::string command = "--cursor-file cursor log/k.xml -o cat";
    const auto entry = [](int second) {
        return "Date:2026-3-1 Time:9:0:" + std::to_string(second) + " :: " + std::to_string(second);
    };
    workspace.write("log/k.xml", entry(1) + entry(2));
    workspace.write("mine", "");
    std::filesystem::create_symlink("mine", workspace.path("cursor.new"));
    EXPECT_EQ(run(command + " -n 1"), "2\n");
    EXPECT_EQ(run(command), "status 1 ");
    EXPECT_EQ(workspace.read("mine"), "");
    workspace.write("log/k.xml", entry(1) + entry(2) + entry(3));
    EXPECT_EQ(output("mv log/k.xml log/k2026_3_1_9_0_4.xml && gzip log/k2026_3_1_9_0_4.xml"), "");
    workspace.write("log/k2026_3_1_9_0_5.xml", entry(4));
    workspace.write("log/k.xml", entry(5));
    EXPECT_EQ(run(command), "3\n4\n5\n");
    workspace.write("log/k.xml", entry(5) + entry(6));
    EXPECT_EQ(output("timeout 1 '" ZEPHAN_LOG "' --follow " + command + " 2>said || true"), "6\n");
    EXPECT_EQ(run(command), "status 1 ");
    // Not there any more: what is left is printed again rather than not at all.
    workspace.write("log/k.xml", "");
    workspace.write("log/k2026_3_1_9_0_5.xml", entry(7));
    std::filesystem::remove(workspace.path("log/k2026_3_1_9_0_4.xml.gz"));
    EXPECT_EQ(run(command), "7\n");
    EXPECT_NE(workspace.read("said").find("is gone"), std::string::npos);
    workspace.write("cursor", "");
    EXPECT_EQ(run(command + " -q"), "7\n");
    EXPECT_EQ(workspace.read("said"), "");
    EXPECT_EQ(run("--cursor-file log/k2026_3_1_9_0_5.xml log/k.xml"),
              "status 2 zephan-log: log/k2026_3_1_9_0_5.xml: not a cursor, so it is left alone\n");
}

TEST_F(ZephanLogTest, APagerShowsEntriesOnATerminal) {
    workspace.write("log/k.xml", "Date:2026-3-1 Time:9:0:0 :: a");
    const auto onTerminal = [this](const std::string& options) {
        return output("TZ=UTC PAGER='sed s/^/page:/' script -qec \"'" ZEPHAN_LOG "' log/k.xml " + options +
                      "\" /dev/null </dev/null | tr -d '\\r'");
    };
    EXPECT_EQ(onTerminal(""),
              "page:"
              "2026-03-01T09:00:00Z a\n");
    EXPECT_EQ(onTerminal("--no-pager"), "2026-03-01T09:00:00Z a\n");
    EXPECT_EQ(onTerminal("--json").substr(0, 8), "{\"time\":");
}

TEST_F(ZephanLogTest, CompressedFiles) {
    workspace.write("log/k2026_3_1_9_0_5.xml", "Date:2026-3-1 Time:9:0:0 :: a");
    workspace.write("log/k.xml", "Date:2026-3-1 Time:9:0:5 :: b");
    EXPECT_EQ(output("gzip log/k2026_3_1_9_0_5.xml"), "");
    EXPECT_EQ(run("-o cat log/k.xml"), "a\nb\n");
    EXPECT_EQ(output("cd log && cat *.gz *.gz >two.xml.gz && head -c 30 two.xml.gz >cut.xml.gz"), "");
    EXPECT_EQ(run("-o cat log/two.xml.gz"), "a\na\n");
    EXPECT_EQ(
        output("cd log && head -c 512 /dev/zero >>two.xml.gz && (cat k2*.gz && echo more) >more.xml.gz"), "");
    EXPECT_EQ(run("-o cat log/two.xml.gz"), "a\na\n");
    EXPECT_EQ(run("-o cat log/more.xml.gz"),
              "a\nstatus 2 zephan-log: log/more.xml.gz: not what gzip has written\n");
    EXPECT_EQ(run("-o cat log/cut.xml.gz log/k.xml"),
              "a\nb\nstatus 2 zephan-log: log/cut.xml.gz: the compressed file ends in its middle\n");
}

TEST_F(ZephanLogTest, SaysThatArchivesCannotBeListed) {
    workspace.write("log/k.xml", "Date:2026-3-1 Time:9:0:0 :: a");
    ASSERT_EQ(::chmod(workspace.path("log/k.xml").c_str(), 0644), 0);
    ASSERT_EQ(::chmod(workspace.path("log").c_str(), 0111), 0);
    ASSERT_EQ(::chmod(workspace.path("").c_str(), 0755), 0);
    // The super-user may list everything.
    const std::string user = ::geteuid() == 0 ? "setpriv --reuid=65534 --regid=65534 --clear-groups " : "";
    EXPECT_EQ(output(user + "'" ZEPHAN_LOG "' -o cat log/k.xml 2>said"),
              "a\nstatus 2 zephan-log: log/: Permission denied\n");
    ::chmod(workspace.path("log").c_str(), 0755);
}

TEST_F(ZephanLogTest, FollowBeginsWithTheLastTenEntries) {
    for (int second = 0; second < 15; ++second) {
        std::ofstream(workspace.path("log/k.xml"), std::ios::app)
            << "Date:2026-3-1 Time:9:0:" << second << " :: entry " << second << "\n";
    }
    const std::string command = "cd '" + workspace.path("").string() +
                                "' && (TZ=UTC '" ZEPHAN_LOG "' --follow log/k.xml & echo $! >pid; wait)";
    std::FILE* const stream = ::popen(command.c_str(), "r");
    char line[256] = {};
    for (int second = 5; second < 15; ++second) {
        ASSERT_NE(std::fgets(line, sizeof line, stream), nullptr);
        EXPECT_NE(std::string(line).find("entry " + std::to_string(second) + "\n"), std::string::npos)
            << line;
    }
    std::filesystem::rename(workspace.path("log/k.xml"), workspace.path("log/k2026_3_1_9_0_15.xml"));
    std::ofstream(workspace.path("log/k.xml")) << "Date:2026-3-1 Time:9:0:15 :: new\n";
    ASSERT_NE(std::fgets(line, sizeof line, stream), nullptr);
    EXPECT_STREQ(line, "2026-03-01T09:00:15Z new\n");
    ::kill(std::stoi(workspace.read("pid")), SIGTERM);
    ::pclose(stream);
}

TEST_F(ZephanLogTest, HelpNamesEveryOption) {
    const std::string help = run("--help");
    for (const char* const option :
         {"-S, --since",   "-U, --until",  "-g, --grep",   "--exclude",     "-i, --ignore-case",
          "-C, --context", "-n, --last",   "--lines",      "--cursor-file", "-f, --follow",
          "-r, --reverse", "-o, --output", "--json",       "--utc",         "--zone",
          "--log-zone",    "--no-pager",   "-q, --quiet",  "--files",       "--disk-usage",
          "--config",      "-h, --help",   "-V, --version"}) {
        EXPECT_NE(help.find(option), std::string::npos) << option;
    }
    for (const std::string& line : linesOf(help)) {
        EXPECT_LE(line.size(), 110U) << line;
    }
    EXPECT_EQ(run("-h"), help);
    EXPECT_EQ(run("--version"), "zephan-log " VERSION "\n");
    EXPECT_EQ(run("-V"), run("--version"));
}

// The format file for the log viewer: its expressions fit what the program prints, first lines and others.
TEST_F(ZephanLogTest, TheFormatFileFitsTheOutput) {
    std::ifstream file(LNAV_FORMAT);
    const auto format = nlohmann::json::parse(file).at("zephan_log");
    const RE2 entry(format.at("regex").at("entry").at("pattern").get<std::string>());
    const RE2 error(format.at("level").at("error").get<std::string>());
    ASSERT_TRUE(entry.ok() && error.ok());
    for (const auto& sample : format.at("sample")) {
        const auto line = sample.at("line").get<std::string>();
        std::string time;
        std::string body;
        EXPECT_TRUE(RE2::FullMatch(line, entry, &time, &body)) << line;
        EXPECT_EQ(RE2::PartialMatch(body, error), sample.value("level", "") == "error") << line;
    }
    workspace.write(
        "log/k.xml",
        "Date:2026-3-1 Time:9:0:0 :: a\n2026-03-01T09:00:00Z forged\nDate:2026-3-1 Time:9:0:1 :: b");
    for (const char* const zone : {"UTC", "+05:30", "-11:00"}) {
        std::string beginnings;
        for (const std::string& line : linesOf(run(std::string("--zone ") + zone + " log/k.xml"))) {
            beginnings += RE2::FullMatch(line, entry) ? "entry " : "more ";
        }
        EXPECT_EQ(beginnings, "entry more entry ");
    }
}

}  // namespace
