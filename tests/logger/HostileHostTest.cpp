// The built library in a host of this process: many threads, and an environment that goes wrong under it.
#include "AgentHost.h"
#include "ZephanRSMLogger.h"
#include "logger/Logs.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
constexpr int kMessagesPerThread = 2500;
#else
constexpr int kMessagesPerThread = 25000;
#endif
constexpr int kThreads = 8;

namespace fs = std::filesystem;

/// An export of the library, looked up as an agent does it.
template <typename Function>
Function& exported(const char* name) {
    static void* const library = ::dlopen(MODULE, RTLD_NOW | RTLD_LOCAL);
    return *reinterpret_cast<Function*>(::dlsym(library, name));
}
#define CALL(name) exported<decltype(name)>(#name)

class HostileHostTest : public testing::Test {
  protected:
    void configure(const std::string& more = {}) const {
        workspace_.write("config", logs::configuration(logs::setting("LogFilePath", log_.string()) + more));
    }
    void start() const { ASSERT_EQ(CALL(ZPXRSMLoggerStatup)(workspace_.path("config").c_str()), 0); }
    static void stop() { CALL(ZPXRSMLoggerShutdown)(); }
    static void log(const char* text) { CALL(ZPXRSMLoggerLog)(30, text); }
    /// Runs the body in a process of its own, which must end by itself.
    static void inChild(const std::function<void()>& body) {
        const pid_t child = ::fork();
        if (child == 0) {
            body();
            std::fflush(nullptr);
            ::_exit(0);
        }
        int status = -1;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        ASSERT_EQ(status, 0);
    }
    std::string written() const { return logs::withoutStamps(workspace_.read("log/k.xml")); }

    const support::Workspace workspace_;
    const fs::path log_ = workspace_.path("log/k.xml");
    agent::AgentHost host_;
};

TEST_F(HostileHostTest, EveryEntryOfManyThreadsStandsOnce) {
    configure(logs::setting("FileSize", "65536"));
    start();
    testing::internal::CaptureStdout();
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([thread] {
            for (int i = 0; i < kMessagesPerThread; ++i) {
                const std::string text = std::to_string(thread * kMessagesPerThread + i) + "\n";
                i % 2 == 0 ? log(text.c_str()) : static_cast<void>(CALL(ZPXRSMLoggerAudit)(text.c_str()));
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
    for (const auto& entry : fs::directory_iterator(workspace_.path("log"))) {
        ++files;
        std::istringstream lines(
            logs::withoutStamps(workspace_.read("log/" + entry.path().filename().string())));
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

TEST_F(HostileHostTest, FollowsItsFile) {
    const fs::path other = workspace_.path("other");
    const auto mayBeGone = [](const fs::path& path) { fs::remove_all(path); };
    const struct {
        const char* name;
        std::function<void()> fault;
        std::function<void()> repair;
        const char* written;
    } rows[] = {
        {"nothing happens", [] {}, [] {}, "|a|b|c"},
        {"deleted", [&] { mayBeGone(log_); }, [] {}, "|b|c"},
        {"replaced", [&] { fs::rename(other, log_); }, [] {}, "other|b|c"},
        {"emptied", [&] { fs::resize_file(log_, 0); }, [] {}, "|b|c"},
        {"appended to", [&] { std::ofstream(log_, std::ios::app) << "-"; }, [] {}, "|a-|b|c"},
        {"a link", [&] { mayBeGone(log_), fs::create_symlink(other, log_); }, [] {}, "other|b|c"},
        {"a link to nothing", [&] { mayBeGone(log_), fs::create_symlink("new", log_); }, [] {}, "|b|c"},
        {"a FIFO", [&] { mayBeGone(log_), ::mkfifo(log_.c_str(), 0600); }, [&] { mayBeGone(log_); }, "|c"},
        {"a directory", [&] { mayBeGone(log_), fs::create_directory(log_); }, [&] { mayBeGone(log_); }, "|c"},
        {"the directory gone", [&] { mayBeGone(log_.parent_path()); },
         [&] { fs::create_directory(log_.parent_path()); }, "|c"},
    };
    configure();
    for (const auto& row : rows) {
        mayBeGone(log_);
        workspace_.write("other", "other");
        testing::internal::CaptureStdout();
        start();
        log("a");
        row.fault();
        log("b");
        row.repair();
        log("c");
        stop();
        EXPECT_EQ(testing::internal::GetCapturedStdout(), "abc") << row.name;
        EXPECT_EQ(written(), row.written) << row.name;
    }
}

TEST_F(HostileHostTest, FileThatCannotBeOpenedAtTheStartComesWithARotation) {
    configure(logs::setting("FileSize", "1"));
    ::mkfifo(log_.c_str(), 0600);
    start();
    log("a");
    fs::remove(log_);
    log("b");
    workspace_.write("log/k.xml", "old");
    log("c");
    stop();
    EXPECT_EQ(written(), "|c\n");
}

TEST_F(HostileHostTest, FullDiskTearsNoEntry) {
    configure();
    inChild([this] {
        std::signal(SIGXFSZ, SIG_IGN);
        start();
        log("a");
        rlimit limit = {};
        ::getrlimit(RLIMIT_FSIZE, &limit);
        const rlimit full = {fs::file_size(log_) + 40, limit.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &full);
        log("this text does not fit");
        log("b");
        ::setrlimit(RLIMIT_FSIZE, &limit);
        log("c");
    });
    EXPECT_EQ(written(), "|a|b|c");
}

TEST_F(HostileHostTest, OutputOfAHostWithoutStandardDescriptorsLandsInNoFile) {
    configure("<RSMResumeStatusFile>" + workspace_.path("state/resume.xml").string() +
              "</RSMResumeStatusFile>");
    inChild([this] {
        ::close(0), ::close(1), ::close(2);
        void* handle = nullptr;
        CALL(ZPXRSMDSStartup)(&handle, workspace_.path("state/schedule.xml").c_str());
        start();
        for (const char* text : {"a", "b", "c"}) {
            log(text);
            std::fflush(stdout);
            std::fprintf(stderr, "error");
        }
        stop();
    });
    EXPECT_EQ(written(), "|a|b|c");
    EXPECT_EQ(workspace_.read("state/schedule.xml"), "");
    EXPECT_EQ(fs::status(log_).permissions() & fs::perms(0111), fs::perms::none);
}

}  // namespace
