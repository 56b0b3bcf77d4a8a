// What other threads wait for while the agent is busy: the longest log call beside a report, a script and a
// start that take ten seconds, and how long a stop takes beside each of them.
#include "Module.h"
#include "Report.h"
#include "platform/agent/Logging.h"
#include "sim/host/ServiceCall.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <string>
#include <thread>

#include <fcntl.h>
#include <unistd.h>

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr auto kBusy = 10s;
constexpr auto kSettling = 500ms;  // until the others are busy
constexpr auto kLogging = 2s;
// Milliseconds, of the ten thousand for which the others are busy: a busy machine may hold any thread up for some.
constexpr double kLogBar = 100.0;
constexpr double kStopBar = 3200.0;  // milliseconds, of which the polling thread is given 3000

/// The module with all families on a stand-in agent.
class Session final {
  public:
    explicit Session(const bench::Scratch& scratch) : scratch_(scratch), module_(BENCH_MODULE) {
        std::ofstream(scratch.path("config.xml"))
            << "<C><FileLogging><LogFilePath>" << scratch.path("log.xml")
            << "</LogFilePath><LogLevel>info</LogLevel></FileLogging><TunnelMessags><OpenMessage><Message>opened</Message>"
               "</OpenMessage></TunnelMessags><ListnerSet><RDListner>on</RDListner><TunnelListner>on</TunnelListner>"
               "<FileListner>on</FileListner></ListnerSet><Script>sleep 10</Script><RSMResumeStatusFile>"
            << scratch.path("resume.xml") << "</RSMResumeStatusFile></C>";
        void* handle = nullptr;
        module_.ZPXRSMDSStartup(&handle, scratch.path("schedule.xml").c_str());
        module_.ZPXRSMLoggerStatup(scratch.path("config.xml").c_str());
        KRXLogSetFunc(module_.ZPXRSMLoggerLog);
        KRXLogSetAuditFunc(module_.ZPXRSMLoggerAudit);
        startRsm();
        module_.ZPXRSMWSStartup(&handle, host_.serviceAgent());
        module_.ZPXRSMWSCreateService(handle, &service_);
    }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
    ~Session() { module_.ZPXRSMWSDestroyService(nullptr, service_); }

    void startRsm() {
        void* handle = nullptr;
        module_.ZPRSMExtnStartup(&handle, host_.serviceAgent(), scratch_.path("config.xml").c_str());
    }
    void connect() {
        sim::callService(*service_, "connect", {{"pollDuration", "10"}, {"pollingRate", "60"}});
    }
    void schedule() {
        std::string texts[] = {"RSMStartDate", "2999:01:01", "RSMStartTime", "10:00:00"};
        Prop properties[] = {{texts[0].data(), nullptr, nullptr, texts[1].data()},
                             {texts[2].data(), nullptr, nullptr, texts[3].data()}};
        const PropList list{properties, 2};
        module_.ZPXRSMDSExectue(nullptr, nullptr, "ScheduleRSM", &list, nullptr);
    }
    void log() {
        module_.ZPXRSMLoggerLog(ZP_LEVEL_INFO, "Poll of the enterprise server ended after 1234 ms.\n");
    }
    agent::AgentHost& host() { return host_; }

    double longestLogCall() {
        double longest = 0;
        for (const auto until = Clock::now() + kLogging; Clock::now() < until;) {
            const auto before = Clock::now();
            log();
            longest = std::max(longest, Milliseconds(Clock::now() - before).count());
        }
        return longest;
    }
    double stop() {
        const auto before = Clock::now();
        module_.ZPXRSMLoggerShutdown();
        return Milliseconds(Clock::now() - before).count();
    }

  private:
    const bench::Scratch& scratch_;
    agent::AgentHost host_;
    agent::Module module_;
    ZPService* service_ = nullptr;
};

struct Row {
    const char* name;
    void (*prepare)(Session& session);
    void (*beBusy)(Session& session);  ///< on a thread of its own; returns when it is no longer
};

const Row kRows[] = {
    {"nothing", [](Session& session) { session.connect(); }, [](Session& /*session*/) {}},
    {"a report", [](Session& session) { session.host().setEnterpriseDelay(kBusy); },
     [](Session& session) { session.connect(); }},
    {"a script", [](Session& session) { session.connect(); },
     [](Session& session) { session.host().audit("a tunnel is opened"); }},
    {"a start",
     [](Session& session) {
         session.schedule();
         session.host().setEnterpriseDelay(kBusy);
     },
     [](Session& session) { session.startRsm(); }},
};

bool measure(const Row& row, std::FILE* table) {
    const bench::Scratch scratch;
    Session session(scratch);
    row.prepare(session);
    std::thread busy([&] { row.beBusy(session); });
    std::this_thread::sleep_for(kSettling);
    const double log = session.longestLogCall();
    const double stop = session.stop();
    busy.join();
    session.host().endThreads();
    const bool kept = log <= kLogBar && stop <= kStopBar;
    std::fprintf(table, "%-10s %12.3f ms %9.1f ms%s\n", row.name, log, stop, kept ? "" : "  missed");
    std::fflush(table);
    return kept;
}

bool keepsItsBars(const Row& row, std::FILE* table) {
    for (int attempt = 0; attempt < bench::kAttempts; ++attempt) {
        if (measure(row, table)) {
            return true;
        }
    }
    return false;
}

}  // namespace

int main() {
    std::FILE* const table = ::fdopen(::dup(STDOUT_FILENO), "w");
    if (table == nullptr || std::freopen("/dev/null", "w", stdout) == nullptr) {
        return 2;
    }
    std::fprintf(
        table,
        "A report, a script and a start take 10 s each. The polling thread sleeps a minute, so a stop gives it 3 s.\n\n"
        "beside     longest log call      a stop\n");
    bool kept = true;
    for (const Row& row : kRows) {
        kept = keepsItsBars(row, table) && kept;
    }
    std::fprintf(table, "bars       %12.3f ms %9.1f ms\n", kLogBar, kStopBar);
    return kept ? 0 : 1;
}
