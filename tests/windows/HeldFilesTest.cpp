// Files that another program holds, which can be neither moved nor removed here.
#include "logger/Logs.h"
#include "support/Replay.h"

#include <string>
#include <windows.h>

#include <gtest/gtest.h>

namespace {

/// A program that reads a file, as most do: others may read and write it meanwhile.
class Reader final {
  public:
    explicit Reader(const std::filesystem::path& path)
        : file_(::CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                              OPEN_EXISTING, 0, nullptr)) {
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
