// What the platform layer owes to the rooms above, where Windows has its own way.
#include "platform/Clock.h"
#include "platform/Directory.h"
#include "platform/File.h"
#include "platform/windows/DirectoryScan.h"
#include "support/Workspace.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>
#include <time.h>
#include <vector>
#include <windows.h>

#include <gtest/gtest.h>

namespace {

using platform::Directory;
using platform::File;
using platform::OpenMode;

TEST(Clock, MomentsBefore1970HaveTheDateOfTheZone) {
    ASSERT_EQ(::_putenv("TZ=AAA-2"), 0);  // two hours east
    const std::tm fields = platform::localFields(-3 * 3600);
    EXPECT_EQ(fields.tm_year, 69);
    EXPECT_EQ(fields.tm_mday, 31);
    EXPECT_EQ(fields.tm_hour, 23);
    ::_putenv("TZ=");
    ::_tzset();
}

TEST(DirectoryScan, EntriesAndErrorNumbers) {
    using namespace platform::windows;
    const support::Workspace workspace;
    workspace.write("log/a.xml", "");
    const std::string place = workspace.path("log").string();
    for (const std::string& name : {place, place + "\\", place + "/"}) {
        DIR* const scan = opendir(name.c_str());
        ASSERT_NE(scan, nullptr) << name;
        std::string entries;
        while (const char* entry = readdir(scan)) {
            entries += entry + std::string(" ");
        }
        EXPECT_EQ(entries, ". .. a.xml ");
        EXPECT_EQ(errno, 2);
        errno = 0;
        EXPECT_EQ(readdir(scan), nullptr);
        EXPECT_EQ(errno, 9);
        EXPECT_EQ(closedir(scan), 0);
    }
    for (const std::string& name : {place + "\\a.xml", place + "\\none", std::string("?")}) {
        errno = 0;
        EXPECT_EQ(opendir(name.c_str()), nullptr) << name;
        EXPECT_EQ(errno, 2);
        EXPECT_EQ(Directory().open(name), 2) << name;
    }
    errno = 0;
    EXPECT_EQ(readdir(nullptr), nullptr);
    EXPECT_EQ(errno, 9);
    errno = 0;
    EXPECT_EQ(closedir(nullptr), -1);
    EXPECT_EQ(errno, 9);
}

TEST(Directory, DriveAloneIsItsRoot) {
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path("C:\\windows");
    Directory directory;
    std::vector<std::string> names;
    EXPECT_EQ(directory.open("C:"), 0);
    EXPECT_EQ(directory.list(names), 0);
    EXPECT_NE(std::find(names.begin(), names.end(), "windows"), names.end());
    EXPECT_EQ(std::find(names.begin(), names.end(), "system32"), names.end());
    std::filesystem::current_path(before);
}

TEST(File, LinesEndAsTheSystemsDo) {
    const support::Workspace workspace;
    const std::string path = workspace.path("log/a.xml").string();
    workspace.write("log/a.xml", "x");
    File file = File::open(path, OpenMode::Append);
    EXPECT_EQ(file.append("one"), 3U);
    EXPECT_EQ(file.append("\n\r\ntwo\n"), 10U);
    EXPECT_EQ(file.size(), 14);
    EXPECT_EQ(workspace.read("log/a.xml"), "xone\r\n\r\r\ntwo\r\n");
    EXPECT_TRUE(file.truncate(4));  // what is left of a write that did not fit is cut off
    EXPECT_EQ(file.append("2"), 1U);
    EXPECT_EQ(workspace.read("log/a.xml"), "xone2");
}

TEST(File, OthersReadAndWriteButDoNotMoveIt) {
    const support::Workspace workspace;
    const std::string path = workspace.path("log/a.xml").string();
    File file = File::open(path, OpenMode::Append);
    File second = File::open(path, OpenMode::Append);
    EXPECT_EQ(second.append("their"), 5U);
    EXPECT_EQ(file.append("s"), 1U);  // behind what others wrote
    EXPECT_EQ(workspace.read("log/a.xml"), "theirs");
    EXPECT_TRUE(file.isSameFile(second));
    second.close();
    EXPECT_FALSE(platform::removeFile(path));
    Directory directory;
    ASSERT_EQ(directory.open(workspace.path("log").string()), 0);
    EXPECT_EQ(directory.rename("a.xml", "b.xml"), platform::Renaming::Failed);
    file.close();
    workspace.write("log/b.xml", "");
    EXPECT_EQ(directory.rename("a.xml", "b.xml"), platform::Renaming::NameTaken);
    EXPECT_EQ(directory.rename("a.xml", workspace.path("c.xml").string()), platform::Renaming::Done);
    EXPECT_EQ(workspace.read("c.xml"), "theirs");
}

TEST(File, OnlyRegularOnesAreOpened) {
    const support::Workspace workspace;
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(workspace.path(""));
    Directory directory;
    ASSERT_EQ(directory.open("."), 0);
    for (const char* const name : {"NUL", "CON", "log", "\\\\.\\pipe\\zephan", "", "a?"}) {
        for (const OpenMode mode :
             {OpenMode::Read, OpenMode::ReadWrite, OpenMode::Create, OpenMode::Append}) {
            EXPECT_FALSE(File::open(name, mode).isOpen()) << name;
            EXPECT_FALSE(directory.openFile(name, mode).isOpen()) << name;
        }
    }
    EXPECT_FALSE(Directory().openFile("a.xml", OpenMode::Create).isOpen()) << "without a directory";
    EXPECT_FALSE(File::open("absent", OpenMode::ReadWrite).isOpen());
    std::filesystem::current_path(before);
}

TEST(File, RecordsAreOverwrittenInPlace) {
    const support::Workspace workspace;
    File file = File::open(workspace.path("state/s.xml").string(), OpenMode::Create);
    EXPECT_TRUE(file.overwriteStart("first record\n"));
    EXPECT_TRUE(file.overwriteStart("second"));
    EXPECT_TRUE(file.sync());
    EXPECT_EQ(file.readWhole(100), "secondrecord\n");
    EXPECT_TRUE(file.truncate(6));
    EXPECT_EQ(file.readWhole(3), "sec");
    char byte = 0;
    EXPECT_EQ(file.readAt(5, &byte, 1), 1);
    EXPECT_EQ(byte, 'd');
    EXPECT_EQ(file.readAt(6, &byte, 1), 0);
}

TEST(Path, AbsoluteFromNowOn) {
    const support::Workspace workspace;
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(workspace.path("log"));
    const std::string here = std::filesystem::current_path().string();
    const std::string drive = here.substr(0, 2);
    for (const auto& [path, absolute] :
         std::vector<std::pair<std::string, std::string>>{{"a.xml", here + "\\a.xml"},
                                                          {"..\\a/b", here + "\\..\\a\\b"},
                                                          {"", here + "\\"},
                                                          {drive + "a", here + "\\a"},
                                                          {"/a", drive + "\\a"},
                                                          {"Q:/a", "Q:\\a"},
                                                          {"//server/share/a", "\\\\server\\share\\a"}}) {
        EXPECT_EQ(platform::absolutePath(path), absolute) << path;
    }
    std::filesystem::current_path(before);
}

TEST(Path, LettersThatTheCodePageLacksLeadNowhere) {
    const support::Workspace workspace;
    const std::filesystem::path before = std::filesystem::current_path();
    const std::filesystem::path similar =
        workspace.path("za");  // as the system spells the other one with 8 bits
    const std::filesystem::path own = workspace.path("") / L"z\u03b1";
    workspace.write("za/k.xml", "somebody else's");
    ASSERT_TRUE(std::filesystem::create_directory(own));
    std::filesystem::current_path(own);
    char name[MAX_PATH] = {};
    ASSERT_NE(::GetCurrentDirectoryA(sizeof name, name), 0U);
    ASSERT_TRUE(std::string_view(name).ends_with("za")) << name;
    EXPECT_EQ(Directory().open("."), 2);
    EXPECT_EQ(Directory().open("log"), 2);
    EXPECT_FALSE(File::open(platform::absolutePath("k.xml"), OpenMode::Append).isOpen());
    EXPECT_FALSE(platform::removeFile(platform::absolutePath("k.xml")));
    std::filesystem::current_path(before);
    EXPECT_EQ(workspace.read("za/k.xml"), "somebody else's");
    EXPECT_TRUE(std::filesystem::is_empty(own));
}

TEST(Clock, CalendarFromBeginningToEnd) {
    const auto text = [](std::int64_t moment) {
        const std::tm fields = platform::utcFields(moment);
        return std::to_string(fields.tm_year + 1900) + "-" + std::to_string(fields.tm_mon + 1) + "-" +
               std::to_string(fields.tm_mday) + " " + std::to_string(fields.tm_hour) + ":" +
               std::to_string(fields.tm_min) + ":" + std::to_string(fields.tm_sec) + " " +
               std::to_string(fields.tm_wday) + " " + std::to_string(fields.tm_yday);
    };
    EXPECT_EQ(text(0), "1970-1-1 0:0:0 4 0");
    EXPECT_EQ(text(-1), "1969-12-31 23:59:59 3 364");
    EXPECT_EQ(text(1709210096), "2024-2-29 12:34:56 4 59");
    EXPECT_EQ(text(253402300799), "9999-12-31 23:59:59 5 364");
    EXPECT_EQ(text(std::int64_t{1} << 60), text(0)) << "beyond the calendar";
    const auto moment = [](int year, int month, int day, int hour, int minute, int second) {
        std::tm fields{};
        fields.tm_year = year - 1900;
        fields.tm_mon = month - 1;
        fields.tm_mday = day;
        fields.tm_hour = hour;
        fields.tm_min = minute;
        fields.tm_sec = second;
        return platform::momentOfUtc(fields);
    };
    EXPECT_EQ(moment(1970, 1, 1, 0, 0, 0), 0);
    EXPECT_EQ(moment(1900, 1, 1, 0, 0, 0), -2208988800);
    EXPECT_EQ(moment(2024, 2, 29, 12, 34, 56), 1709210096);
    EXPECT_EQ(moment(2023, 14, 29, 12, 34, 56), 1709210096) << "carried over";
    EXPECT_EQ(moment(2024, 3, 0, 12, 33, 116), 1709210096) << "carried over";
    EXPECT_EQ(moment(2024, 0, 1, 0, 0, 0), moment(2023, 12, 1, 0, 0, 0));
}

}  // namespace
