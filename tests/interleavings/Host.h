// A host and its enterprise, whose threads take turns.
#pragma once

#include "../rsm/Library.h"
#include "Explorer.h"
#include "Turns.h"
#include "lib/AgentHost.h"
#include "lib/Enterprise.h"
#include "lib/Observer.h"
#include "sim/host/Module.h"
#include "sim/time/Clock.h"
#include "sim/time/ProcessTime.h"
#include "support/Workspace.h"

#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// The module is loaded, and logger, RSM and web service have been started, when this is made; the data source
/// comes with a play. Operations are called by the host's thread, or by clients.
class Host final : private agent::Observer, private agent::Enterprise {
  public:
    using Client = std::pair<std::string, std::function<void(Host&)>>;

    Host();
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;
    ~Host() override;

    /// Starts what a play finds.
    void begin();
    /// Lets the clients go, each on a thread of its own, as soon as there have been so many polls, and comes back
    /// when all have.
    void play(const std::vector<Client>& clients, int polls);
    /// What is wrong when all that was ordered has happened; empty when nothing is.
    std::string judge();

    // What clients do.
    void start();
    void startAgain() { families_.start(Families::rsm); }
    void stop();
    int connect(const char* minutes, const char* rate) { return Families::connect(service_, minutes, rate); }
    void disconnect() { sim::callService(*service_, "disconnect", {{"memberName", "client"}}); }
    /// A ScheduleRSM for 2026-03-01 at this time of the day; a play begins at 10:00:00 and is over before 12:00:00.
    void schedule(const char* time);
    void audit(const char* text) { library_.ZPXRSMLoggerAudit(text); }
    /// A message that must be in the log.
    void log(const std::string& text);
    void killThread();

    void pass(int milliseconds);
    /// The enterprise takes a second for what this thread sends, from now on.
    static constexpr const char* kEverybody = "";
    void answerSlowly(const char* thread) { slow_ = thread; }
    /// What is sent gets through when one of the clients has come back.
    void answerAfterAnOrder() { awaitsOrder_ = true; }
    /// Standard output is read when all clients but one have come back.
    void readLate();
    void failNextStart() { scheduler_.failNextStart(); }

  private:
    void onLog(int level, std::string_view text) override;
    void onForcePoll() override;
    void onThreadStart(const std::string& /*name*/, std::int8_t /*result*/) override {
        turns::offer("KRXThreadStart");
    }
    void onThreadEnd(int /*result*/) override { turns::offer("the thread's return"); }
    std::int8_t receive(const std::string& member, const agent::NamedValues& properties) override;

    std::string command(const char* name, std::vector<std::pair<std::string, std::string>> properties);
    std::string told(std::size_t property) const;
    void idle(int seconds);
    std::string judgeState();
    std::string judgeLog() const;

    const support::Workspace workspace_;
    sim::Clock clock_;
    sim::Scheduler scheduler_;
    agent::AgentHost host_;
    const Library library_;
    const sim::Module image_;
    Families families_;
    ZPService* service_ = nullptr;

    bool wasStopped_ = false;
    bool killed_ = false;
    bool isNotStored_ = false;     ///< a line says that a schedule could not be stored
    bool isUnconfigured_ = false;  ///< a line says that there is no configuration
    bool awaitsOrder_ = false;
    int polls_ = 0;
    std::vector<agent::Thread*> clients_;
    std::size_t finished_ = 0;  ///< of the clients
    std::string slow_ = "nobody";
    std::vector<std::string> schedules_;  ///< times of the day of those that were answered "Pass"
    std::vector<std::string> entries_;
    agent::NamedValues told_;
};
