// The built library and its log file in an environment that goes wrong: other processes, other file systems,
// other things at the file's place.
#include "logger/LoggingHost.h"
#include "support/Child.h"
#include "support/Rows.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <functional>
#include <numeric>
#include <regex>
#include <sched.h>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>

namespace {

namespace fs = std::filesystem;

using logs::LoggingHost;

/// Texts of all files of a folder, sorted.
std::string contents(const LoggingHost& host, const std::string& folder) {
    std::multiset<std::string> texts;
    for (const auto& entry : fs::directory_iterator(host.workspace.path(folder))) {
        if (entry.is_regular_file()) {
            texts.insert("[" + host.written(folder + "/" + entry.path().filename().string()) + "]");
        }
    }
    return support::replaced(std::accumulate(texts.begin(), texts.end(), std::string()), "\n", "/");
}

class LogFileTest : public testing::Test, protected LoggingHost {};

constexpr std::int64_t kSunday = 1772359200;  // 2026-03-01 10:00:00 UTC
const std::string kEachEntryRotates = logs::setting("FileSize", "1");

TEST_F(LogFileTest, CleanUpStaysInItsDirectory) {
    const fs::path folder = workspace.path("log");
    const auto age = [](const fs::path& path, int days) {
        const timespec time{::time(nullptr) - days * 86400, 0};
        const std::array<timespec, 2> times{time, time};
        EXPECT_EQ(::utimensat(AT_FDCWD, path.c_str(), times.data(), AT_SYMLINK_NOFOLLOW), 0) << path;
    };
    const auto make = [&](const fs::path& path, int days) {
        workspace.write(path.lexically_relative(workspace.path("")).string(), "text");
        age(path, days);
    };
    const auto link = [&](const char* target, const char* name, int days) {
        fs::create_symlink(target, folder / name);
        age(folder / name, days);
    };
    const char* const escaping = R"(k.xml.d\..\..\victim\important.xml)";
    make(folder / escaping, 99);
    make(workspace.path("victim/important.xml"), 99);
    fs::create_directory(folder / "k.xml.d");  // a way for the name above, were it a path
    age(folder / "k.xml.d", 99);
    ::mkfifo((folder / "k.xml.fifo").c_str(), 0600);
    age(folder / "k.xml.fifo", 99);
    make(folder / "k.old.xml", 99);
    make(folder / "k.young.xml", 1);
    link("../victim/important.xml", "k.link-old.xml", 99);
    link("../victim/important.xml", "k.link-young.xml", 1);
    make(workspace.path("victim/live.xml"), 1);
    link("../victim/live.xml", "k.xml", 99);
    link("nothing", "k.dangling.xml", 99);
    link("../victim", "k.link-to-directory.xml", 99);
    start();
    stop();
    EXPECT_EQ(workspace.list("log"), "k.link-young.xml k.xml k.xml.d k.xml.fifo k.young.xml");
    EXPECT_TRUE(workspace.exists("victim/important.xml"));
    EXPECT_TRUE(fs::is_symlink(file)) << "a log that lies elsewhere stays there";
}

TEST_F(LogFileTest, ADirectoryThatCannotBeReadToItsEndIsToldOf) {
    support::inChild([&] {
        support::refuse({{SYS_getdents64, EOVERFLOW}});  // numbers of files that 32 bits do not hold
        start();
        stop();
        EXPECT_EQ(errors.unread, 1);
    });
    start();
    stop();
    EXPECT_EQ(errors.unread, 0);
}

struct ThingRow {
    support::RowName name;
    void (*make)(const fs::path& file);
};

const support::Rows<ThingRow> thingRows(
    "LogFile/WhatIsNoRegularFileStaysAsItIs",
    {
        {"a directory", [](auto& file) { fs::create_directory(file); }},
        {"a FIFO", [](auto& file) { ::mkfifo(file.c_str(), 0600); }},
        {"a link to a device", [](auto& file) { fs::create_symlink("/dev/full", file); }},
        {"a link to a directory", [](auto& file) { fs::create_symlink("..", file); }},
    },
    [](const ThingRow& row) {
        LoggingHost host;
        row.make(host.file);
        struct stat before {};
        ::lstat(host.file.c_str(), &before);
        for (const char* const limit : {"5000", "0"}) {
            host.start(logs::setting("FileSize", limit));
            for (const std::int64_t second : {kSunday, kSunday, kSunday + 1}) {
                interposed::now = second;
                host.log("a");
            }
            host.stop();
        }
        struct stat after {};
        EXPECT_EQ(::lstat(host.file.c_str(), &after), 0);
        EXPECT_EQ(after.st_ino, before.st_ino);
        EXPECT_EQ(host.workspace.list("log"), "k.xml");
        EXPECT_EQ(host.errors.count, 2);
    });

/// Of an entry 40 characters are not written; another process writes then, or when the rest fails.
struct ShortWriteRow {
    support::RowName name;
    bool otherFollowsThePart;
    bool otherFollowsTheFailure;
    std::string written;
};

const std::string kHalf(40, 't');

const support::Rows<ShortWriteRow> shortWriteRows(
    "LogFile/NoTextOfAnotherProcessIsCut",
    {
        {"alone", false, false, "|a|b"},
        {"another write behind the part", true, false, "|a|" + kHalf + "<other>|b"},
        {"another write before the part is taken back", false, true, "|a|" + kHalf + "<other>|b"},
    },
    [](const ShortWriteRow& row) {
        LoggingHost host;
        host.start();
        host.log("a");
        bool isFirst = true;
        interposed::write = [&](int descriptor, const void* data, std::size_t size) -> ssize_t {
            const std::string_view text(static_cast<const char*>(data), size);
            if (text.find("ttt") == text.npos) {
                return ::syscall(SYS_write, descriptor, data, size);
            }
            ssize_t result = -1;
            const bool isPart = std::exchange(isFirst, false);
            if (isPart) {
                result = ::syscall(SYS_write, descriptor, data, size - kHalf.size());
            }
            if (isPart ? row.otherFollowsThePart : row.otherFollowsTheFailure) {
                std::ofstream(host.file, std::ios::app) << "<other>";
            }
            errno = ENOSPC;
            return result;
        };
        host.log((kHalf + kHalf).c_str());
        interposed::write = nullptr;
        host.log("b");
        host.stop();
        EXPECT_EQ(host.written(), row.written);
    });

struct FileSystemRow {
    support::RowName name;
    std::vector<support::Refusal> refusals;
};

const support::Rows<FileSystemRow> fileSystemRows(
    "LogFile/RotatesOnFileSystemsThatCannotDoEverything",
    {
        {"no rename without replacing", {{SYS_renameat2, EINVAL}}},
        {"no second names either", {{SYS_renameat2, EINVAL}, {SYS_linkat, EPERM}}},
        {"an old system", {{SYS_renameat2, ENOSYS}, {SYS_linkat, EOPNOTSUPP}, {SYS_statx, ENOSYS}}},
        {"a host that is confined to old calls", {{SYS_statx, EPERM}}},
    },
    [](const FileSystemRow& row) {
        for (const bool nameTaken : {false, true}) {
            LoggingHost host;
            // A directory of that name cannot be opened as a file, but must not be lost either.
            const fs::path archive = host.workspace.path("log/k2026_3_1_10_0_0.xml");
            nameTaken ? fs::create_directory(archive) : false;
            support::inChild([&] {
                support::refuse(row.refusals);
                ::setenv("TZ", "UTC", 1);
                interposed::now = kSunday;
                host.start(kEachEntryRotates);
                host.log("a");
                host.log("b");
                host.stop();
                EXPECT_EQ(host.errors.count, 0);
            });
            EXPECT_EQ(contents(host, "log"), "[|a][|b/]");
            EXPECT_EQ(fs::is_directory(archive), nameTaken);
        }
    });

TEST_F(LogFileTest, RotatesInTheDirectoryThatItHolds) {
    interposed::now = kSunday;
    start(kEachEntryRotates);
    log("a");
    fs::rename(workspace.path("log"), workspace.path("old"));
    fs::create_directory(workspace.path("log"));
    log("b");
    EXPECT_EQ(contents(*this, "old"), "[|a][|b/]");
    ++interposed::now;
    log("c");
    stop();
    EXPECT_EQ(contents(*this, "log"), "[|c]");
    EXPECT_EQ(errors.count, 0);
}

struct PathRow {
    support::RowName name;
    const char* path;
    const char* archives;  ///< in this folder
};

const support::Rows<PathRow> pathRows("LogFile/RelativePathStaysWhereItWasAtTheStart",
                                      {
                                          {"with a directory", "log/k.xml", "log"},
                                          {"a name alone", "k.xml", "."},
                                          {"archives in another directory", "./log/agent", "."},
                                          {"there and back", "log/../k.xml", "."},
                                      },
                                      [](const PathRow& row) {
                                          LoggingHost host;
                                          support::inChild([&] {
                                              fs::current_path(host.workspace.path(""));
                                              interposed::now = kSunday;
                                              host.start(kEachEntryRotates, row.path);
                                              host.log("a");
                                              fs::current_path("/");
                                              host.log("b");
                                              ++interposed::now;
                                              host.log("c");
                                              host.stop();
                                              const std::string archives = contents(host, row.archives);
                                              EXPECT_NE(archives.find("[|a]"), std::string::npos) << archives;
                                              EXPECT_EQ(host.errors.count, 0);
                                          });
                                          EXPECT_EQ(host.written(row.path), "|c\n");
                                      });

/// A file system of 64 KiB in the place of the directory, for this process and its children.
bool mountSmallFileSystem(const fs::path& directory) {
    return (::unshare(CLONE_NEWNS) == 0 || ::unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0) &&
           ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           ::mount("tmpfs", directory.c_str(), "tmpfs", 0, "size=64k") == 0;
}

TEST_F(LogFileTest, TwoProcessesFillADisk) {
    constexpr int kEntries = 600;
    bool mounted = false;
    support::inChild([&] {
        if (!mountSmallFileSystem(workspace.path("log"))) {
            return;
        }
        workspace.write("mounted", "yes");
        configure(logs::setting("FileSize", "20000"));
        std::array<pid_t, 2> children{};
        for (std::size_t i = 0; i < children.size(); ++i) {
            children.at(i) = support::startChild([&, i] {
                ASSERT_NE(std::freopen("/dev/null", "w", stdout), nullptr);
                std::ofstream accepted(workspace.path("accepted" + std::to_string(i)));
                interposed::write = [&](int descriptor, const void* data, std::size_t size) {
                    const ssize_t result = ::syscall(SYS_write, descriptor, data, size);
                    const std::string_view text(static_cast<const char*>(data), size);
                    if (result == static_cast<ssize_t>(size) && text.find("Date:") == 0) {
                        accepted << logs::withoutStamps(std::string(text)).substr(1, 5) << '\n';
                    }
                    return result;
                };
                startAsConfigured();
                for (int entry = 0; entry < kEntries; ++entry) {
                    std::array<char, 128> text{};
                    std::snprintf(text.data(), text.size(), "%zu%04d%090d\n", i, entry, 0);
                    log(text.data());
                }
                stop();
                accepted.close();
                interposed::write = nullptr;
            });
        }
        for (const pid_t child : children) {
            support::expectGoodEnd(child);
        }
        const std::string all = contents(*this, "log");
        std::set<std::string> found;
        std::string one;
        for (std::istringstream entries(std::regex_replace(all, std::regex(R"([\[\]/])"), ""));
             std::getline(entries, one, '|');) {
            if (!one.empty()) {
                EXPECT_EQ(one.size(), 95U) << one;
                EXPECT_TRUE(found.insert(one.substr(0, 5)).second) << one;
            }
        }
        EXPECT_LT(found.size(), 2U * kEntries) << "the disk was to be full";
        EXPECT_GT(found.size(), 64U * 1024 / 150);
        for (const char* const name : {"accepted0", "accepted1"}) {
            for (std::istringstream entries(workspace.read(name)); entries >> one;) {
                EXPECT_EQ(found.count(one), 1U) << one;
            }
        }
        for (const auto& entry : fs::directory_iterator(workspace.path("log"))) {
            entry.path() != file ? fs::remove(entry.path()) : false;
        }
        start();
        log("There is room again.");
        stop();
        EXPECT_NE(written().find("|There is room again."), std::string::npos);
    });
    mounted = workspace.exists("mounted");
    if (!mounted) {
        GTEST_SKIP() << "no file system can be mounted here: run it as root, or allow user namespaces";
    }
}

}  // namespace
