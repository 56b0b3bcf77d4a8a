// The program as its users start it, with a small module.
#include "support/Rows.h"
#include "support/Shell.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdlib>
#include <pty.h>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

struct Simulator {
    /// Runs the program in a directory of its own.
    support::Run simulate(const std::string& arguments, const std::string& scenario = {}) {
        workspace.write("scenario", scenario);
        return support::shell(workspace, "'" SIMULATOR "' " + arguments);
    }

    const support::Workspace workspace;
};

class SimulatorTest : public testing::Test, protected Simulator {};

struct HangRow {
    support::RowName name;
    std::string scenario;
    std::string message;
};

const support::Rows<HangRow> hangRows(
    "Simulator/HangsAreTold",
    {
        {"worker that holds the module's lock while it reports",
         "0 enterprise delay 5\n0 command reports null\n2 command lock null\n",
         "host waits in command lock null; "
         "Worker waits in its entry function, UpdateAsset, the answer of the enterprise until 6.000\n"},
        {"report in the log hook, where the line of the link waits for the log",
         "0 enterprise thread on\n0 log-lock on\n2 command log null\n",
         "host waits in command log null, KRXLog, the log hook, UpdateAsset; Link waits in KRXLog\n"},
        {"sleep that lets no time pass", "0 command reports null\n0 command spin null\n",
         "host waits in command spin null"},
    },
    [](const HangRow& row) {
        Simulator simulator;
        const support::Run outcome = simulator.simulate(
            "replay scenario --patience 0.2 --trace trace --report page --module '" FAKE_MODULE "'",
            "0 start rsm null\n0 start logger 9\n" + row.scenario);
        EXPECT_EQ(outcome.status, 1);
        EXPECT_TRUE(outcome.printed.starts_with("the module hangs: " + row.message)) << outcome.printed;
        EXPECT_TRUE(simulator.workspace.read("trace").ends_with("}\n"));
        EXPECT_NE(simulator.workspace.read("page").find("</html>"), std::string::npos);
    });

TEST_F(SimulatorTest, WaitingForAProgramIsNoHang) {
    EXPECT_EQ(simulate("replay scenario --patience 0.1 --module '" FAKE_MODULE "'", "0 audit \"sleep 0.4\"\n")
                  .status,
              0);
}

TEST_F(SimulatorTest, RunTakesTypedVerbs) {
    const support::Run typed = simulate("run --module '" FAKE_MODULE "' --trace - <scenario",
                                        "start rsm null\nnonsense\nstop rsm\nend\naudit x\n");
    EXPECT_EQ(typed.status, 1);
    EXPECT_NE(typed.printed.find("<stdin>:2: unknown verb 'nonsense'"), std::string::npos) << typed.printed;
    EXPECT_NE(typed.printed.find(R"("verb":"stop rsm","result":0)"), std::string::npos) << typed.printed;
    EXPECT_EQ(typed.printed.find("audit x"), std::string::npos) << typed.printed;
}

TEST_F(SimulatorTest, HelpShowsForms) {
    const support::Run typed =
        simulate("run --module '" FAKE_MODULE "' <scenario", "help enterprise\nhelp x\nquit\n");
    EXPECT_EQ(typed.status, 0);
    EXPECT_EQ(typed.printed,
              "  enterprise accept|refuse                          how the enterprise answers a profile\n"
              "  enterprise delay SECONDS                          how long it takes to answer\n"
              "  enterprise thread on|off                          whether profiles are sent on a thread of "
              "their own\n"
              "  no verb begins with 'x'\n");
}

TEST_F(SimulatorTest, BriefTimeline) {
    const support::Run brief = simulate("replay scenario --brief --module '" FAKE_MODULE "'",
                                        "0 start rsm null\n0 start logger 3\n1 fail thread-start\n"
                                        "10 start logger 1\n10 command " +
                                            std::string(80, 'x') + " null\n10 show " + std::string(54, 'y') +
                                            "\xc3\xb6\xc3\xb6" + std::string(60, 'y') + "\n");
    EXPECT_EQ(brief.status, 0);
    EXPECT_EQ(brief.printed,
              "    0.000 00:00:00Z host         start rsm null -> 0\n"
              "    0.000 00:00:00Z host         thread: Worker is started\n"
              "    0.000 00:00:00Z host         start logger 3 -> 0\n"
              "    1.000 00:00:01Z Worker       3 polls, the last at 3.000 s\n"
              "    3.000 00:00:03Z Worker       thread: ends with 7\n"
              "   10.000 00:00:10Z host         thread: Worker cannot be started\n"
              "   10.000 00:00:10Z host         start logger 1 -> -1\n"
              "   10.000 00:00:10Z host         command " +
                  std::string(48, 'x') +
                  "\u2026 -> 1\n"
                  "   10.000 00:00:10Z host         file: " +
                  std::string(54, 'y') + "\u00f6\u00f6" + std::string(24, 'y') + "\u2026\n");
}

TEST_F(SimulatorTest, StatusStandsAmongTheEvents) {
    const std::string scenario = "0 status\n0 start rsm x\n0 start logger 9\n3 status\n";
    const support::Run brief = simulate("replay scenario --brief --module '" FAKE_MODULE "'", scenario);
    EXPECT_TRUE(brief.printed.starts_with("The agent has not started the module yet.\n")) << brief.printed;
    const std::size_t polls = brief.printed.find("2 polls, the last at 2.000 s\n");
    const std::size_t status = brief.printed.find("  polls          2 made");
    EXPECT_LT(polls, status) << brief.printed;
    EXPECT_NE(status, std::string::npos) << brief.printed;
    const support::Run trace = simulate("replay scenario --trace trace --module '" FAKE_MODULE "'", scenario);
    EXPECT_TRUE(trace.printed.starts_with("The agent has not started the module yet.\n")) << trace.printed;
    EXPECT_EQ(workspace.read("trace").find("status"), std::string::npos);
}

struct StrictRow {
    support::RowName name;
    const char* scenario;
    int status;
};

const support::Rows<StrictRow> strictRows(
    "Simulator/StrictTellsFailedStarts",
    {{"failed stop alone", "0 start rsm x\n0 stop rsm null\n", 0},
     {"failed start", "0 fail thread-start\n0 start logger 1\n0 start rsm x\n", 3},
     {"failed start before a mistake", "0 fail thread-start\n0 start logger 1\n0 age none 1\n", 1}},
    [](const StrictRow& row) {
        EXPECT_EQ(
            Simulator().simulate("replay scenario --strict --module '" FAKE_MODULE "'", row.scenario).status,
            row.status);
    });

/// A person at a terminal, who types and looks at what is there.
class Person final {
  public:
    explicit Person(std::vector<const char*> words) {
        child_ = ::forkpty(&terminal_, nullptr, nullptr, nullptr);
        if (child_ == 0) {
            ::setenv("TERM", "xterm", 1);
            words.push_back(nullptr);
            ::execv(words[0], const_cast<char* const*>(words.data()));
            ::_exit(127);
        }
    }
    Person(const Person&) = delete;
    Person& operator=(const Person&) = delete;
    ~Person() { ::close(terminal_); }

    void type(std::string_view keys) {
        ASSERT_EQ(::write(terminal_, keys.data(), keys.size()), ssize_t(keys.size()));
    }
    /// Makes the window so wide; who watches windows may tell of it twice.
    void resize(unsigned short columns) const {
        const winsize size = {24, columns, 0, 0};
        ASSERT_EQ(::ioctl(terminal_, TIOCSWINSZ, &size), 0);
        ::kill(child_, SIGWINCH);
    }
    /// Waits until `text` is there, and forgets what came before.
    bool sees(const std::string& text) {
        for (std::size_t at = 0; (at = seen_.find(text)) == std::string::npos;) {
            pollfd watched = {terminal_, POLLIN, 0};
            std::array<char, 1024> buffer = {};
            const ssize_t size =
                ::poll(&watched, 1, 10'000) > 0 ? ::read(terminal_, buffer.data(), buffer.size()) : 0;
            if (size <= 0) {
                ADD_FAILURE() << "no '" << text << "' in: " << seen_;
                return false;
            }
            seen_.append(buffer.data(), static_cast<std::size_t>(size));
        }
        seen_.erase(0, seen_.find(text) + text.size());
        return true;
    }
    void kill(int signal) const { ::kill(child_, signal); }
    int exitStatus() const {
        int status = -1;
        ::waitpid(child_, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

  private:
    int terminal_ = -1;
    pid_t child_ = -1;
    std::string seen_;
};

TEST_F(SimulatorTest, KeyboardEditsCompletesAndStaysWhole) {
    std::string scenario;
    for (int i = 1; i < 200; ++i) {
        scenario += std::to_string(i / 10) + "." + std::to_string(i % 10) + " show nowhere\n";
    }
    workspace.write("scenario", scenario);
    const std::string path = workspace.path("scenario").string();
    Person person({SIMULATOR, "run", path.c_str(), "--module", FAKE_MODULE});
    ASSERT_TRUE(person.sees("rsm> "));
    person.type("stop web\t\n");
    EXPECT_TRUE(person.sees("call: stop web-service -> -1"));
    person.type("\x1b[A\x7f\x7f");  // the line before, without its last two letters
    EXPECT_TRUE(person.sees("stop web-servi"));
    person.type("\x15");
    person.type("thread-destroy l\t");
    EXPECT_TRUE(person.sees("eave "));
    EXPECT_TRUE(person.sees("file: nowhere holds nothing"));
    EXPECT_TRUE(person.sees("rsm> thread-destroy leave "));  // there again behind what was printed
    person.type("\nquit\n");
    EXPECT_EQ(person.exitStatus(), 0);
}

TEST_F(SimulatorTest, KeyboardFollowsTheWindowsWidth) {
    Person person({SIMULATOR, "run", "--module", FAKE_MODULE});
    ASSERT_TRUE(person.sees("rsm> "));
    for (unsigned short i = 0; i < 100; ++i) {
        person.resize(static_cast<unsigned short>(60 + i));
        person.type("show nowhere\n");
        ASSERT_TRUE(person.sees("file: nowhere holds nothing"));
    }
    person.resize(10);
    person.type("show nowhere");
    EXPECT_TRUE(person.sees("show  \bnowhere")) << "is not wrapped behind the tenth column";
    person.type("\nquit\n");
    EXPECT_EQ(person.exitStatus(), 0);
}

struct EndRow {
    support::RowName name;
    std::vector<std::pair<const char*, const char*>> steps;  ///< what is typed, and what is then seen
    int signal;                                              ///< that ends the session; 0: Ctrl-C
};

const support::Rows<EndRow> endRows(
    "Simulator/KeyboardSessionEndsWithItsPage",
    {{"Ctrl-C", {}, 0},
     {"Ctrl-C first on a half line",
      {{"show els", "els"}, {"\x03", "^C"}, {"show there\n", "file: there holds nothing"}},
      0},
     {"Ctrl-C behind Ctrl-D", {{"\x04", "The session goes on"}}, 0},
     {"SIGTERM on a half line", {{"show els", "els"}}, SIGTERM},
     {"SIGHUP", {}, SIGHUP}},
    [](const EndRow& row) {
        const Simulator simulator;
        const std::string page = simulator.workspace.path("page.html").string();
        Person person({SIMULATOR, "run", "--module", FAKE_MODULE, "--report", page.c_str()});
        person.type("start rsm x\nstart logger 9\n");  // its thread lives for 9 seconds
        ASSERT_TRUE(person.sees("start logger 9 -> 0"));
        for (const auto& [keys, seen] : row.steps) {
            person.type(keys);
            ASSERT_TRUE(person.sees(seen));
        }
        row.signal == 0 ? person.type("\x03") : person.kill(row.signal);
        EXPECT_EQ(person.exitStatus(), 0);
        EXPECT_TRUE(simulator.workspace.read("page.html").ends_with("</html>\n"));
    });

struct OutcomeRow {
    support::RowName name;
    const char* arguments;
    const char* scenario;
    int status;
    const char* message;
};

const support::Rows<OutcomeRow> outcomeRows(
    "Simulator/StatusAndMessage",
    {
        {"help", "--help", "", 0, "Usage: krx-agent-sim replay SCENARIO"},
        {"help in short", "-h", "", 0, "Usage: krx-agent-sim replay SCENARIO"},
        {"version", "--version", "", 0, "krx-agent-sim "},
        {"version in short", "-V", "", 0, "krx-agent-sim "},
        {"no command", "", "", 2, "krx-agent-sim: no command\nTry krx-agent-sim --help.\n"},
        {"unknown command", "play", "", 2, "unknown command play"},
        {"no scenario", "replay", "", 2, "no scenario to replay"},
        {"two scenarios", "replay a b", "", 2, "unexpected argument b"},
        {"option without its value", "run --trace", "", 2, "no value for option --trace"},
        {"unknown option", "run --fast", "", 2, "unknown option --fast"},
        {"timeline for a trace", "replay scenario --brief --trace x", "", 2, "--brief is for the timeline"},
        {"no patience", "run --patience 0", "", 2, "'0' is not a time in seconds"},
        {"scenario that is not there", "replay missing", "", 1, "missing: No such file or directory"},
        {"mistake in the scenario", "replay scenario", "# x\n1 leap\n", 1, "scenario:2: unknown verb 'leap'"},
        {"file that is not there", "replay scenario", "1 age x 1\n", 1,
         "scenario:1: x: No such file or directory"},
        {"module that is not there", "replay scenario --module ./none", "\n0 asset absent\n1 stop logger\n",
         1, "scenario:3: cannot load the module: ./none"},
        {"module without the exports", "replay scenario --module '" NO_MODULE "'", "0 stop logger\n", 1,
         "does not export ZPRSMExtnStartup"},
        {"pipe that is shown", "replay scenario --module '" FAKE_MODULE "'",
         "0 audit \"mkfifo f\"\n0 show f\n", 1, "scenario:2: f: is not a regular file"},
        {"pipe that is written", "replay scenario --module '" FAKE_MODULE "'",
         "0 audit \"mkfifo f\"\n0 write f x\n", 1, "scenario:2: f: is not a regular file"},
        {"trace in a directory that is not there", "replay scenario --trace none/trace", "0 end\n", 1,
         "none/trace: No such file or directory"},
        {"trace on a full device", "replay scenario --trace /dev/full", "0 show x\n", 1,
         "/dev/full: cannot write: No space left on device"},
        {"run without a keyboard", "run scenario </dev/null", "0.02 show x\n", 0, "file: x holds nothing"},
        {"trace on standard output", "replay scenario --trace /dev/stdout", "0 show x\n", 0,
         "\"event\":\"file\",\"path\":\"x\",\"text\":null"},
    },
    [](const OutcomeRow& row) {
        const support::Run outcome = Simulator().simulate(row.arguments, row.scenario);
        EXPECT_EQ(outcome.status, row.status);
        EXPECT_NE(outcome.printed.find(row.message), std::string::npos) << outcome.printed;
    });

}  // namespace
