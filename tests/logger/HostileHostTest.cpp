// The built library in a host of this process: many threads, and an environment that goes wrong under it.
#include "logger/LoggingHost.h"
#include "support/Child.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdio>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
constexpr int kMessagesPerThread = 2500;
#else
constexpr int kMessagesPerThread = 25000;
#endif
constexpr int kThreads = 8;

namespace fs = std::filesystem;

using logs::LoggingHost;

class HostileHostTest : public testing::Test, protected LoggingHost {};

TEST_F(HostileHostTest, EveryEntryOfManyThreadsStandsOnce) {
    start(logs::setting("FileSize", "65536"));
    testing::internal::CaptureStdout();
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([thread] {
            for (int i = 0; i < kMessagesPerThread; ++i) {
                const std::string text = std::to_string(thread * kMessagesPerThread + i) + "\n";
                i % 2 == 0 ? log(text.c_str())
                           : static_cast<void>(logs::module().ZPXRSMLoggerAudit(text.c_str()));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    stop();
    testing::internal::GetCapturedStdout();
    std::vector<int> seen(kThreads * kMessagesPerThread, 0);
    std::size_t files = 0;
    for (const auto& entry : fs::directory_iterator(workspace.path("log"))) {
        ++files;
        std::istringstream lines(
            logs::withoutStamps(workspace.read("log/" + entry.path().filename().string())));
        for (std::string line; std::getline(lines, line);) {
            if (!line.empty()) {  // the line end behind the first entry of a file
                ASSERT_EQ(line.find_first_not_of("|0123456789"), std::string::npos) << line;
                ++seen.at(std::stoul(line.substr(1)));
            }
        }
    }
    EXPECT_EQ(static_cast<std::size_t>(std::count(seen.begin(), seen.end(), 1)), seen.size());
    EXPECT_GT(files, seen.size() * 30 / 70000);
}

TEST_F(HostileHostTest, FileThatCannotBeOpenedAtTheStartComesWithARotation) {
    ::mkfifo(file.c_str(), 0600);
    start(logs::setting("FileSize", "1"));
    log("a");
    fs::remove(file);
    log("b");
    workspace.write("log/k.xml", "old");
    log("c");
    stop();
    EXPECT_EQ(written(), "|c\n");
}

TEST_F(HostileHostTest, LargestSizeOfFilesEndsNobody) {
    support::inChild([this] {
        rlimit limit{};
        ::getrlimit(RLIMIT_FSIZE, &limit);
        limit.rlim_cur = 4000;
        ::setrlimit(RLIMIT_FSIZE, &limit);  // beyond it a write sends a signal, whose default is the end
        start();
        log("a");
        log(std::string(4000, '-').c_str());
        sigset_t pending{};
        ::sigpending(&pending);
        EXPECT_EQ(sigismember(&pending, SIGXFSZ), 0);
    });
    EXPECT_EQ(written(), "|a");
}

TEST_F(HostileHostTest, OutputOfAHostWithoutStandardDescriptorsLandsInNoFile) {
    support::inChild([this] {
        ::close(0), ::close(1), ::close(2);
        void* handle = nullptr;
        logs::module().ZPXRSMDSStartup(&handle, workspace.path("state/schedule.xml").c_str());
        start("<RSMResumeStatusFile>" + workspace.path("state/resume.xml").string() +
              "</RSMResumeStatusFile>");
        for (const char* text : {"a", "b", "c"}) {
            log(text);
            std::fflush(stdout);
            std::fprintf(stderr, "error");
        }
        stop();
    });
    EXPECT_EQ(written(), "|a|b|c");
    EXPECT_EQ(workspace.read("state/schedule.xml"), "");
    EXPECT_EQ(fs::status(file).permissions() & fs::perms(0111), fs::perms::none);
}

TEST_F(HostileHostTest, LooksOpenNothing) {
    interposed::now = 1772359200;
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
