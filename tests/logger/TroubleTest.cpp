// The log file in a directory where for a while not everything can be done: as a user whom permissions bind.
#include "logger/LoggingHost.h"
#include "logger/User.h"
#include "support/Rows.h"

#include <array>
#include <cstdio>
#include <fstream>
#include <map>
#include <sstream>
#include <string>

#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

using logs::asAUser;
using logs::LoggingHost;
using logs::setMostDescriptors;

constexpr std::int64_t kSunday = 1772359200;

void chmod(const fs::path& path, mode_t mode) {
    EXPECT_EQ(::chmod(path.c_str(), mode), 0) << path;
}

struct TroubleRow {
    support::RowName name;
    void (*begin)(const fs::path& log);
    void (*end)(const fs::path& log);
};

const auto kDirectoryUsable = [](const fs::path& log) { chmod(log.parent_path(), 0700); };
const auto kParentUsable = [](const fs::path& log) { chmod(log.parent_path().parent_path(), 0700); };
const auto kNameFree = [](const fs::path& log) { fs::remove(log); };

const support::Rows<TroubleRow> troubleRows(
    "Trouble/EachEntryIsKept",
    {
        {"no free descriptor", [](auto&) { setMostDescriptors(3); }, [](auto&) { setMostDescriptors(1024); }},
        {"directory not searchable", [](auto& log) { chmod(log.parent_path(), 0600); }, kDirectoryUsable},
        {"directory not writable", [](auto& log) { chmod(log.parent_path(), 0500); }, kDirectoryUsable},
        {"directory not to be used", [](auto& log) { chmod(log.parent_path(), 0); }, kDirectoryUsable},
        {"parent not searchable", [](auto& log) { chmod(log.parent_path().parent_path(), 0600); },
         kParentUsable},
        {"parent not writable", [](auto& log) { chmod(log.parent_path().parent_path(), 0500); },
         kParentUsable},
        {"file not readable", [](auto& log) { chmod(log, 0200); }, [](auto&) {}},
        {"file not writable", [](auto& log) { chmod(log, 0400); },
         [](auto& log) { fs::remove(log.string() + "-"); }},
        {"a directory in the place of the file",
         [](auto& log) { fs::rename(log, log.string() + "-"), fs::create_directory(log); }, kNameFree},
        {"a FIFO in the place of the file",
         [](auto& log) { fs::rename(log, log.string() + "-"), ::mkfifo(log.c_str(), 0600); }, kNameFree},
    },
    [](const TroubleRow& row) {
        constexpr int kEntries = 80;
        for (const char* const limit : {"5000000", "1000", "0"}) {
            SCOPED_TRACE(limit);
            const LoggingHost host;
            asAUser(host, [&] {
                interposed::now = kSunday;
                host.start(logs::setting("FileSize", limit));
                for (int i = 0; i < kEntries; ++i) {
                    i == kEntries / 4       ? row.begin(host.file)
                    : i == kEntries * 3 / 4 ? row.end(host.file)
                                            : void();
                    interposed::now = kSunday + i / 10;
                    std::array<char, 64> text{};
                    std::snprintf(text.data(), text.size(), "%02d%040d\n", i, 0);
                    host.log(text.data());
                }
                host.stop();
            });
            std::map<std::string, int> found;
            for (const auto& entry : fs::directory_iterator(host.workspace.path("log"))) {
                std::istringstream lines(host.written("log/" + entry.path().filename().string()));
                for (std::string line; std::getline(lines, line);) {
                    found[line.substr(0, 3)] += line.empty() ? 0 : 1;
                }
            }
            found.erase("");
            int once = 0;
            for (const auto& [text, times] : found) {
                EXPECT_EQ(times, 1) << text;
                ++once;
            }
            EXPECT_EQ(once, kEntries);
        }
    });

class TroubleTest : public testing::Test, protected LoggingHost {};

TEST_F(TroubleTest, FileThatMayNotBeReadIsNotFull) {
    asAUser(*this, [&] {
        interposed::now = kSunday;
        start(logs::setting("FileSize", "30"));
        log("a");
        chmod(file, 0200);
        log("b");
        log("c");
        chmod(file, 0600);
        log("d");
        stop();
    });
    EXPECT_EQ(written(), "|d\n");
    EXPECT_EQ(written("log/k2026_3_1_10_0_0.xml"), "|a|b|c");
}

TEST_F(TroubleTest, WhatHasNoAgeIsNotDeleted) {
    asAUser(*this, [&] {
        workspace.write("log/k.unreadable.xml", "text");
        chmod(workspace.path("log/k.unreadable.xml"), 0200);
        workspace.write("log/k.young.xml", "text");
        ::mkfifo(workspace.path("log/k.xml.fifo").c_str(), 0600);
        start(logs::setting("LogRevisionDays", "-1"));
        stop();
    });
    EXPECT_EQ(workspace.list("log"), "k.unreadable.xml k.xml k.xml.fifo");
}

TEST_F(TroubleTest, LooksOpenNothing) {
    interposed::now = kSunday;
    start();
    log("a");
    const int watch = ::inotify_init1(IN_NONBLOCK);
    ASSERT_GE(::inotify_add_watch(watch, workspace.path("log").c_str(), IN_OPEN), 0);
    log("b");
    fs::remove(file);
    ::mkfifo(file.c_str(), 0600);
    log("c");
    stop();
    std::array<char, 4096> events{};
    EXPECT_EQ(::read(watch, events.data(), events.size()), -1) << "something was opened";
    ::close(watch);
}

}  // namespace
