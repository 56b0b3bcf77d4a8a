// Files that another program holds, which can be neither moved nor removed here.
#include "lib/AgentHost.h"
#include "lib/Module.h"
#include "lib/Observer.h"
#include "logger/Logs.h"
#include "sim/trace/StdoutCapture.h"
#include "support/Replay.h"

#include <filesystem>
#include <string>
#include <windows.h>

#include <gtest/gtest.h>

namespace {

/// A program that reads a file. Mostly others may read and write it meanwhile.
class Reader final {
  public:
    explicit Reader(const std::filesystem::path& path, DWORD sharing = FILE_SHARE_READ | FILE_SHARE_WRITE)
        : file_(::CreateFileW(path.c_str(), GENERIC_READ, sharing, nullptr, OPEN_EXISTING, 0, nullptr)) {
        EXPECT_NE(file_, INVALID_HANDLE_VALUE);
    }
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;
    ~Reader() { ::CloseHandle(file_); }

  private:
    HANDLE file_;
};

TEST(HeldFiles, TheLogGoesOnInAFileThatCannotBeMoved) {
    const support::Workspace workspace;
    workspace.write("config", logs::configuration(logs::setting("FileSize", "30")));
    workspace.write("log/k.xml", "");
    const Reader reader(workspace.path("log/k.xml"));
    const support::Replay replay(
        workspace,
        "clock 2026-03-01T10:00:00Z\n0 route off\n0 start logger config\n0 log info a\n1 log info b\n2 log info c\n");
    EXPECT_EQ(logs::files(workspace), "log/k.xml |a|b/|c/") << replay.printed();
    EXPECT_EQ(replay.countLogged(250, "\n Error renaming file"), 2);
}

TEST(HeldFiles, WhatNobodyElseMayWriteIsToldOnceAndWrittenWhenItIsFree) {
    struct Told final : agent::Observer {
        void onLog(int level, std::string_view text) override {
            count += level == 250 && text.starts_with("\n Another program keeps the log file") ? 1 : 0;
        }
        int count = 0;
    } told;
    const support::Workspace workspace;
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(workspace.path(""));
    workspace.write("config", logs::configuration());
    workspace.write("log/k.xml", "");
    {
        const agent::AgentHost host({&told, nullptr, nullptr});
        const agent::Module module(ZEPHAN_MODULE);
        sim::StdoutCapture printed;
        constexpr std::uint8_t info = 30;
        int times = 0;
        for (const DWORD sharing : {DWORD{0}, DWORD{FILE_SHARE_READ}}) {
            {
                const Reader reader(workspace.path("log/k.xml"), sharing);
                ASSERT_EQ(module.ZPXRSMLoggerStatup("config"), 0);
                printed.take();
                EXPECT_EQ(module.ZPXRSMLoggerLog(info, "lost"), 0);
                EXPECT_EQ(module.ZPXRSMLoggerLog(info, "lost, too"), 0);
                EXPECT_EQ(printed.take(), "lostlost, too");
                EXPECT_EQ(told.count, ++times);
            }
            EXPECT_EQ(module.ZPXRSMLoggerLog(info, "kept"), 0);
            EXPECT_EQ(module.ZPXRSMLoggerShutdown(), 0);
        }
    }
    const std::string log = workspace.read("log/k.xml");
    EXPECT_EQ(log.find("lost"), std::string::npos);
    EXPECT_NE(log.find("kept"), log.rfind("kept")) << log;
    std::filesystem::current_path(before);
}

TEST(HeldFiles, AnOldFileThatCannotBeRemovedStays) {
    const support::Workspace workspace;
    workspace.write("config", logs::configuration());
    workspace.write("log/k1.xml", "old");
    const Reader reader(workspace.path("log/k1.xml"));
    const support::Replay replay(
        workspace,
        "0 age log/k1.xml 99\n0 write log/k2.xml old\n0 age log/k2.xml 99\n0 start logger config\n");
    EXPECT_EQ(logs::files(workspace), "log/k.xml ; log/k1.xml old") << replay.printed();
    EXPECT_EQ(replay.countLogged(250, "\n Error deleting file...."), 1);
    EXPECT_EQ(replay.countLogged(250, "\n File successfully deleted."), 1);
}

TEST(HeldFiles, LineEndsCountForTheSize) {
    const support::Workspace workspace;  // an entry of two characters and one line end takes 33 bytes
    for (const auto& [limit, files] :
         {std::pair{"33", "log/k.xml |cd/; log/k2026_3_1_10_0_0.xml |ab/"}, {"34", "log/k.xml |ab/|cd"}}) {
        workspace.write("config", logs::configuration(logs::setting("FileSize", limit)));
        const support::Replay replay(
            workspace,
            "clock 2026-03-01T10:00:00Z\n0 route off\n0 start logger config\n0 log info \"ab\\n\"\n0 log info cd\n");
        EXPECT_EQ(logs::files(workspace), files) << replay.printed();
        for (const char* const name : {"log/k.xml", "log/k2026_3_1_10_0_0.xml"}) {
            std::filesystem::remove(workspace.path(name));
        }
    }
}

}  // namespace
