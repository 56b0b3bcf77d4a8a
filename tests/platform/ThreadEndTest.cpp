// Threads that are ended by unwinding them, as pthread_cancel does it.
#include "platform/Console.h"
#include "platform/Directory.h"
#include "platform/File.h"
#include "platform/ThreadEnd.h"
#include "platform/portable/Command.h"
#include "platform/portable/EchoWithoutWait.h"
#include "support/Child.h"
#include "support/Workspace.h"

#include <array>
#include <atomic>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <pthread.h>
#include <unistd.h>

namespace {

/// A thread that was told to end while in here goes on to the end of it.
bool endTestKept(std::atomic<bool>& inside, const std::atomic<bool>& ordered) noexcept {
    const platform::KeepThread keep;
    { const platform::KeepThread nested; }
    inside = true;
    while (!ordered) {
        std::this_thread::yield();
    }
    pthread_testcancel();
    char byte = 0;
    return ::read(-1, &byte, 1) < 0;  // admits the end, too
}

TEST(KeepThread, IsUnwoundBehindItsScopeOnly) {
    std::atomic<bool> inside{false};
    std::atomic<bool> ordered{false};
    std::atomic<bool> wentOn{false};
    std::atomic<bool> unwound{false};
    std::thread thread([&] {
        try {
            wentOn = endTestKept(inside, ordered);
            pthread_testcancel();
            FAIL();
        } catch (const platform::ForcedUnwind&) {
            unwound = true;
            throw;
        } catch (...) {
            FAIL();
        }
    });
    while (!inside) {
        std::this_thread::yield();
    }
    pthread_cancel(thread.native_handle());
    ordered = true;
    thread.join();
    EXPECT_TRUE(wentOn);
    EXPECT_TRUE(unwound);
}

TEST(KeepThread, IsInEachCallThatMustNotThrow) {
    using platform::OpenMode;
    const support::Workspace workspace;
    workspace.write("log/a", "a");
    support::inChild([&] {
        std::setvbuf(stdout, nullptr, _IONBF, 0);
        bool done = false;
        std::thread([&] {
            pthread_cancel(pthread_self());
            platform::echo("-");
            {
                const platform::EchoWithoutWait echo(platform::EchoWithoutWait::Kind::PollingThread);
                platform::echo("-");
            }
            platform::flushEcho();
            platform::complain("-");
            platform::Directory directory;
            std::vector<std::string> names;
            directory.open(workspace.path("log").string());
            directory.list(names);
            directory.modifiedAt("a");
            directory.rename("a", "b");
            platform::File file = directory.openFile("b", OpenMode::Append);
            file.sync();
            file = platform::File::open(workspace.path("log/b"), OpenMode::ReadWrite);
            std::array<char, 8> text{};
            file.readStart(text.data(), text.size());
            file.overwriteStart("text");
            file.close();
            directory.close();
            done = true;
            pthread_testcancel();
            done = false;
        }).join();
        EXPECT_TRUE(done);
        EXPECT_EQ(workspace.read("log/b"), "text");
    });
}

/// The script may be cut short: its interpreter goes, and nothing of it stays.
TEST(KeepThread, IsNotInCommands) {
    support::inChild([] {
        std::thread thread([] { platform::runCommand("exec sleep 20"); });
        ::usleep(100'000);
        pthread_cancel(thread.native_handle());
        thread.join();
        EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1) << "a child is left";
    });
}

}  // namespace
