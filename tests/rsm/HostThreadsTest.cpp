// Threads of the host and of the agent that end, wait or come late while they are inside the module.
#include "Library.h"
#include "lib/AgentHost.h"
#include "lib/FreeRuntime.h"
#include "lib/Observer.h"
#include "platform/agent/Messaging.h"
#include "platform/agent/Threads.h"
#include "support/Child.h"

#include <atomic>
#include <condition_variable>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <malloc.h>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <vector>

#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

using namespace std::chrono_literals;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kSanitized = true;
#else
constexpr bool kSanitized = false;
#endif
constexpr int kSpeed = 100;  // of all that the agent lets pass: a second takes 10 ms

/// The agent's side: what it hears, and what its enterprise does with a record.
class Agent final : public agent::Observer, public agent::Enterprise {
  public:
    void onLog(int level, std::string_view text) override {
        std::unique_lock lock(mutex_);
        lines_ += std::to_string(level) + " " + std::string(text) + "|";
        const auto action = atLine_;
        lock.unlock();
        if (action) {
            action(text);
        }
    }
    void onForcePoll() override {
        count(polls_);
        throwIfToldTo();
    }
    void onThreadStart(const std::string& /*name*/, std::int8_t /*result*/) override {
        if (atStart_) {
            atStart_();
        }
    }
    void onThreadDestroyed(const std::string& /*name*/) override { throwIfToldTo(); }
    void onSleep(unsigned int /*milliseconds*/) override { count(sleeps_); }
    std::int8_t receive(const std::string& /*member*/, const agent::NamedValues& record) override {
        std::unique_lock lock(mutex_);
        const auto action = atRecord_;
        lock.unlock();
        throwIfToldTo();
        if (action) {
            action();  // may end the thread
        }
        lock.lock();
        mode_ = record.at(0).second.value();
        rate_ = record.at(4).second.value();
        changed_.notify_all();
        return 0;
    }

    bool hasLogged(const std::string& line) const {
        const std::lock_guard lock(mutex_);
        return lines_.find(line) != std::string::npos;
    }
    /// The enterprise has heard of this mode last.
    bool waitForMode(const std::string& mode) {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, 30s, [&] { return mode_ == mode; });
    }
    /// It has heard of this rate last.
    bool waitForRate(const std::string& rate) {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, 30s, [&] { return rate_ == rate; });
    }
    bool waitForPolls(int more) { return waitFor(polls_, more); }
    bool waitForSleeps(int altogether) {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, 30s, [&] { return sleeps_ >= altogether; });
    }

    /// From now on polls, reports and the ends of threads end with an exception.
    void throwFromNowOn() { throws_ = true; }
    void setAtLine(std::function<void(std::string_view)> action) {
        const std::lock_guard lock(mutex_);
        atLine_ = std::move(action);
    }
    void setAtStart(std::function<void()> action) { atStart_ = std::move(action); }
    void setAtRecord(std::function<void()> action) {
        const std::lock_guard lock(mutex_);
        atRecord_ = std::move(action);
    }

  private:
    void throwIfToldTo() const {
        if (throws_) {
            throw "no standard exception";
        }
    }
    void count(int& counter) {
        const std::lock_guard lock(mutex_);
        ++counter;
        changed_.notify_all();
    }
    bool waitFor(const int& counter, int more) {
        std::unique_lock lock(mutex_);
        const int until = counter + more;
        return changed_.wait_for(lock, 30s, [&] { return counter >= until; });
    }

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::function<void(std::string_view)> atLine_;
    std::function<void()> atRecord_;
    std::function<void()> atStart_;
    std::string lines_;
    std::string mode_, rate_;
    int polls_ = 0;
    int sleeps_ = 0;
    std::atomic<bool> throws_ = false;
};

/// The agent's library has ended, as one does whose own objects were made after the module was loaded.
std::atomic<bool> agentIsGone = false;

/// 'S' for a thread of this process that sleeps in the system.
char stateOf(pid_t thread) {
    std::ifstream file("/proc/self/task/" + std::to_string(thread) + "/stat");
    std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    const auto behindName = text.rfind(") ");
    return behindName == std::string::npos ? '?' : text[behindName + 2];
}

class HostThreads : public testing::Test {
  protected:
    void start(const std::string& script = {}) {
        workspace_.write("config.xml",
                         "<C>"
                         "<TunnelMessags><OpenMessage><Message>opened</Message></OpenMessage>"
                         "<CloseMessage><Message>closed</Message></CloseMessage></TunnelMessags>"
                         "<ListnerSet><RDListner>on</RDListner><TunnelListner>on</TunnelListner>"
                         "<FileListner>on</FileListner></ListnerSet><Script>" +
                             script +
                             "</Script>"
                             "<RSMResumeStatusFile>state/resume.xml</RSMResumeStatusFile></C>");
        for (const int family :
             {Families::dataSource, Families::logger, Families::rsm, Families::webService}) {
            ASSERT_EQ(families_.start(family), 0);
        }
        service_ = families_.createService();
    }
    int connect(const char* rate = "60") { return Families::connect(service_, "10", rate); }
    void stop() {
        families_.destroyService(service_);
        EXPECT_EQ(families_.stop(Families::logger), 0);
        EXPECT_TRUE(host_.endThreads());
    }

    const support::Workspace workspace_;
    agent::FreeRuntime runtime_{kSpeed};
    Agent agent_;
    agent::AgentHost host_{{&agent_, &agent_, &runtime_}};
    const Library library_;
    Families families_{library_, host_.serviceAgent(), workspace_};
    ZPService* service_ = nullptr;
};

/// Ends a host thread in the middle of the report of a second connect.
void endIn(Agent& agent, const std::function<void()>& call, const std::function<void()>& end) {
    std::thread caller([&] {
        const auto self = std::this_thread::get_id();
        agent.setAtRecord([&, self] {
            if (std::this_thread::get_id() == self) {
                end();
            }
        });
        call();
    });
    caller.join();
    agent.setAtRecord(nullptr);
}

TEST_F(HostThreads, OneThatIsUnwoundInAReportLeavesNothingHeld) {
    start();
    EXPECT_EQ(connect(), 0);
    endIn(
        agent_, [&] { connect(); }, [] { ::pthread_exit(nullptr); });
    EXPECT_EQ(connect(), 0);
    stop();
}

TEST_F(HostThreads, OneThatIsEndedInAReportOrAStartKeepsNobodyBack) {
    if (kSanitized) {
        GTEST_SKIP() << "a sanitizer has to know of the end of each thread";
    }
    start();
    EXPECT_EQ(connect(), 0);
    endIn(
        agent_, [&] { connect(); }, [] { ::syscall(SYS_exit, 0); });
    EXPECT_EQ(connect("50"), 0);
    EXPECT_TRUE(agent_.waitForRate("50")) << "which takes the dead one's role over";
    EXPECT_EQ(families_.stop(Families::logger), 0);
    std::filesystem::remove(workspace_.path("state/resume.xml"));
    for (const int family : {Families::dataSource, Families::rsm}) {
        EXPECT_EQ(families_.start(family), 0);
    }
    agent_.setAtStart([] { ::syscall(SYS_exit, 0); });
    std::thread([&] { connect(); }).join();
    agent_.setAtStart(nullptr);
    EXPECT_EQ(connect(), -1);
    EXPECT_TRUE(agent_.hasLogged("50 \n The thread got ownership of an abandoned logging mutex.|"));
    EXPECT_EQ(connect(), 0);
    stop();
}

TEST_F(HostThreads, RsmPollsAndAllOthersGoOnWhileTheScriptRuns) {
    start("read line &lt; gate");
    const std::string gate = workspace_.path("gate").string();
    ASSERT_EQ(::mkfifo(gate.c_str(), 0600), 0);
    EXPECT_EQ(connect("1"), 0);
    std::atomic<bool> returned = false;
    std::thread teller([&] {
        host_.audit("opened");
        returned = true;
    });
    EXPECT_TRUE(agent_.waitForMode("FORCE_POLL_ACTIVITY"));
    EXPECT_TRUE(agent_.waitForPolls(2));
    library_.ZPXRSMLoggerLog(30, "a message");
    host_.audit("closed");
    host_.audit("opened");
    EXPECT_TRUE(agent_.waitForPolls(2));
    EXPECT_EQ(families_.stop(Families::logger), 0);
    EXPECT_FALSE(returned);
    // A line for each run of the script: whether the second period is still told depends on who comes first.
    // Open for reading, too, so that nobody waits for a run that does not come.
    std::fstream lines(gate, std::ios::in | std::ios::out);
    lines << "\n\n" << std::flush;
    teller.join();
    families_.destroyService(service_);
}

TEST_F(HostThreads, StateFilesStayWhereTheyWereAtTheStart) {
    start();
    workspace_.write("elsewhere/state/schedule.xml", "another's");
    std::filesystem::current_path(workspace_.path("elsewhere"));
    EXPECT_EQ(connect(), 0);
    EXPECT_TRUE(agent_.waitForSleeps(1)) << "before which the state is saved";
    EXPECT_TRUE(workspace_.read("state/resume.xml").starts_with("<ResumeRSM>"));
    EXPECT_EQ(families_.stop(Families::rsm), 0);
    EXPECT_FALSE(std::filesystem::exists(workspace_.path("state/schedule.xml"))) << "nothing is scheduled";
    EXPECT_EQ(workspace_.read("elsewhere/state/schedule.xml"), "another's");
    stop();
}

TEST_F(HostThreads, AStopIsWholeThoughTheAgentsLogThrows) {
    start();
    EXPECT_EQ(connect(), 0);
    agent_.setAtLine([](std::string_view /*line*/) { throw std::runtime_error("no space"); });
    stop();
    agent_.setAtLine(nullptr);
    EXPECT_EQ(host_.audit("opened"), -1) << "the hook is set";
    EXPECT_EQ(library_.ZPRSMExtnStartup(nullptr, nullptr, ""), -1) << "there is a configuration";
}

TEST_F(HostThreads, WhateverTheAgentThrowsEndsNobody) {
    start();
    agent_.throwFromNowOn();
    EXPECT_EQ(connect("1"), 0);
    EXPECT_TRUE(agent_.waitForPolls(2));
    EXPECT_EQ(connect("1"), 0) << "whose report fails";
    agent_.setAtLine([](std::string_view line) {
        if (line.find("ZephanServicesService::") != std::string_view::npos) {
            throw "no space";
        }
    });
    KRX::Messaging::WebServiceMessage message;
    EXPECT_EQ(service_->CreateMessage("reboot", &message), -1);
    EXPECT_EQ(service_->Cleanup(&message), -1);
    stop();
}

TEST_F(HostThreads, AnExceptionThatEndsRsmIsTold) {
    start();
    EXPECT_EQ(connect("1"), 0);
    EXPECT_TRUE(agent_.waitForPolls(1));
    agent_.setAtLine([](std::string_view line) {
        if (line.find("Force Polling  ...") != std::string_view::npos) {
            throw std::runtime_error("no space");
        }
    });
    EXPECT_TRUE(agent_.waitForMode("NOT_ACTIVE"));
    agent_.setAtLine(nullptr);
    EXPECT_EQ(connect("1"), 0);
    EXPECT_TRUE(agent_.waitForPolls(1));
    stop();
}

TEST_F(HostThreads, AStartThatAnswersAFailureDoesNotCount) {
    agent_.setAtLine([](std::string_view line) {
        if (line.find("RSM Logger Extension startup complete") != std::string_view::npos) {
            throw std::runtime_error("no space");
        }
    });
    EXPECT_EQ(families_.start(Families::logger), -1);
    agent_.setAtLine(nullptr);
    EXPECT_EQ(families_.start(Families::rsm) + families_.start(Families::webService), 0);
    service_ = families_.createService();
    EXPECT_EQ(connect("1"), 0);
    EXPECT_EQ(families_.stop(Families::rsm), 0);
    EXPECT_TRUE(agent_.hasLogged("Force Polling Thread")) << "which has ended then";
    stop();
}

TEST_F(HostThreads, AHostMayUseItsTextAnewAsSoonAsSomethingIsLogged) {
    start();
    EXPECT_EQ(connect(), 0);
    EXPECT_TRUE(agent_.waitForSleeps(1));
    char text[] = "a tunnel is opened\n";
    agent_.setAtLine([&](std::string_view) { std::fill(text, text + sizeof text - 1, '-'); });
    testing::internal::CaptureStdout();
    library_.ZPXRSMLoggerAudit(text);
    EXPECT_NE(testing::internal::GetCapturedStdout().find("a tunnel is opened"), std::string::npos);
    EXPECT_EQ(text[0], '-');
    EXPECT_TRUE(agent_.waitForMode("FORCE_POLL_ACTIVITY"));
    agent_.setAtLine(nullptr);
    stop();
}

TEST_F(HostThreads, AStopDoesNotWaitForStandardOutputThatNobodyReads) {
    if (kSanitized) {
        GTEST_SKIP() << "a sanitizer's child process may have no threads of its own";
    }
    for (const bool anotherWaits : {false, true}) {
        support::inChild([&] {
            int ends[2];
            ASSERT_EQ(::pipe(ends), 0);
            ASSERT_EQ(::fcntl(ends[1], F_SETFL, O_NONBLOCK), 0);
            while (::write(ends[1], "0123456789abcdef", 16) > 0) {
            }
            ::fcntl(ends[1], F_SETFL, 0);
            start();
            EXPECT_EQ(connect("1"), 0);
            EXPECT_TRUE(agent_.waitForPolls(1));
            std::fflush(stdout);
            ::dup2(ends[1], STDOUT_FILENO);
            std::setvbuf(stdout, nullptr, _IONBF, 0);
            std::atomic<pid_t> id = 0;
            if (anotherWaits) {
                std::thread([&] {
                    id = ::gettid();
                    library_.ZPXRSMLoggerLog(30, "nobody reads this");
                }).detach();
                while (stateOf(id) != 'S') {
                    std::this_thread::yield();
                }
            }
            EXPECT_TRUE(agent_.waitForPolls(3)) << "whose lines nobody reads either";
            EXPECT_EQ(families_.stop(Families::logger), 0);
            ::_exit(HasFailure() ? 1 : 0);  // what is left to be flushed would wait for a reader
        });
    }
}

TEST(ForkedChildren, EndWhateverLocksTheyHaveCopiesOf) {
    if (kSanitized) {
        GTEST_SKIP() << "a sanitizer has locks of its own, of which the child has copies, too";
    }
    const agent::AgentHost host;
    const Library library;
    std::atomic<bool> over = false;
    std::vector<std::thread> callers;
    for (int i = 0; i < 2; ++i) {
        callers.emplace_back([&] {
            while (!over) {
                library.ZPXRSMDSExectue(nullptr, nullptr, "", nullptr, nullptr);
            }
        });
    }
    for (int i = 0; i < 100 && !HasFailure(); ++i) {
        support::inChild([] {
            ::alarm(5);
            std::exit(0);
        });
    }
    over = true;
    for (std::thread& caller : callers) {
        caller.join();
    }
}

TEST(ProcessEnd, WithoutAStopAsksTheAgentForNothingMore) {
    if (kSanitized) {
        GTEST_SKIP() << "a sanitizer's child process may have no threads of its own";
    }
    for (const bool polls : {true, false}) {
        const support::Workspace workspace;
        support::inChild([&workspace, polls] {
            Agent agent;
            agent::FreeRuntime runtime(kSpeed);
            agent::AgentHost host({&agent, &agent, &runtime});
            const Library library;
            Families families(library, host.serviceAgent(), workspace);
            ASSERT_EQ(families.start(Families::rsm), 0);
            EXPECT_EQ(Families::connect(families.createService(), polls ? "10" : "1", "60"), 0);
            EXPECT_TRUE(agent.waitForSleeps(1) && (polls || agent.waitForMode("NOT_ACTIVE")));
            agentIsGone = true;
            std::exit(HasFailure() ? 1 : 0);
        });
    }
}

TEST(LateMessages, LeaveNothingBehindWhenTheLibraryGoes) {
    if (kSanitized) {
        GTEST_SKIP() << "a sanitizer keeps memory of its own, and tells of lost memory by itself";
    }
    const agent::AgentHost host;
    const auto late = [] {
        const Library library;
        library.ZPXRSMLoggerLog(30, "");
    };
    for (int i = 0; i < 3; ++i) {
        late();
    }
    const auto before = ::mallinfo2().uordblks;
    constexpr int kTimes = 20;
    for (int i = 0; i < kTimes; ++i) {
        late();
    }
    const auto after = ::mallinfo2().uordblks;
    // The loader keeps up to 900 bytes of each load; a controller has more than 3000.
    EXPECT_LT(after, before + kTimes * std::size_t{2000});
}

}  // namespace

/// In front of the agent's own.
extern "C" __attribute__((visibility("default"))) int KRXThreadIsActive(KRXThread* thread) {
    if (agentIsGone) {
        ::_exit(2);
    }
    static const auto own = reinterpret_cast<int (*)(KRXThread*)>(::dlsym(RTLD_NEXT, "KRXThreadIsActive"));
    return own(thread);
}
