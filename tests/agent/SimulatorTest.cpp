// The program as its users start it, with a small module.
#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <pty.h>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

struct Outcome {
    int status = -1;
    std::string output;
};

class SimulatorTest : public testing::Test {
  protected:
    SimulatorTest() { std::filesystem::create_directories(directory_); }
    ~SimulatorTest() override { std::filesystem::remove_all(directory_); }

    /// Runs the program in a directory of its own, with both outputs in one.
    Outcome simulate(const std::string& arguments, const std::string& scenario = {}) {
        write("scenario", scenario);
        const std::string command =
            "cd '" + directory_.string() + "' && '" SIMULATOR "' " + arguments + " 2>&1";
        std::FILE* pipe = ::popen(command.c_str(), "r");
        Outcome outcome;
        std::array<char, 4096> buffer = {};
        for (std::size_t size = 0; (size = std::fread(buffer.data(), 1, buffer.size(), pipe)) > 0;) {
            outcome.output.append(buffer.data(), size);
        }
        const int status = ::pclose(pipe);
        outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        return outcome;
    }
    void write(const char* file, const std::string& text) const { std::ofstream(directory_ / file) << text; }
    std::string contents(const char* file) const {
        std::ifstream stream(directory_ / file, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    /// The trace of a scenario that must run to its end.
    std::string replay(const std::string& scenario) {
        const Outcome outcome = simulate("replay scenario --module '" FAKE_MODULE "' --trace -", scenario);
        EXPECT_EQ(outcome.status, 0);
        return outcome.output;
    }

    const std::filesystem::path directory_ =
        std::filesystem::path(testing::TempDir()) / ("simulator-" + std::to_string(::getpid()));
};

TEST_F(SimulatorTest, ThreadsOnTheVirtualClock) {
    EXPECT_EQ(replay("clock 2026-03-01T10:00:00Z\n"
                     "1 start rsm \"a b\"\n1 start logger 2\n2.5 log warn \"x\\n\"\n3 stop logger\n"),
              R"({"t":1.000,"thread":"host","event":"log","level":40,"text":"start 1 at 1772359201 with a b"}
{"t":1.000,"thread":"host","event":"call","verb":"start rsm a b","result":0}
{"t":1.000,"thread":"host","event":"thread-start","name":"Worker","result":0}
{"t":1.000,"thread":"host","event":"call","verb":"start logger 2","result":0}
{"t":1.000,"thread":"Worker","event":"sleep","ms":1000}
{"t":2.000,"thread":"Worker","event":"force-poll"}
{"t":2.000,"thread":"Worker","event":"stdout","text":"tick"}
{"t":2.000,"thread":"Worker","event":"sleep","ms":1000}
{"t":2.500,"thread":"host","event":"stdout","text":"<40 x\n>"}
{"t":2.500,"thread":"host","event":"call","verb":"log warn x\n","result":0}
{"t":3.000,"thread":"Worker","event":"force-poll"}
{"t":3.000,"thread":"Worker","event":"stdout","text":"tick"}
{"t":3.000,"thread":"Worker","event":"thread-end","result":7}
{"t":3.000,"thread":"host","event":"call","verb":"stop logger","result":0}
)");
}

TEST_F(SimulatorTest, UnloadEndsThreadsAndLoadsAfresh) {
    EXPECT_EQ(
        replay("0 start rsm null\n0 start logger 100\n0 route off\n2 unload\n3 stop rsm\n3 start rsm null\n"
               "3 stop rsm\n3 stop rsm null\n3 fail thread-start\n3 start logger 1\n"),
        R"({"t":0.000,"thread":"host","event":"log","level":40,"text":"start 1 at 1767225600 with null"}
{"t":0.000,"thread":"host","event":"call","verb":"start rsm null","result":0}
{"t":0.000,"thread":"host","event":"thread-start","name":"Worker","result":0}
{"t":0.000,"thread":"host","event":"call","verb":"start logger 100","result":0}
{"t":0.000,"thread":"Worker","event":"sleep","ms":1000}
{"t":1.000,"thread":"Worker","event":"force-poll"}
{"t":1.000,"thread":"Worker","event":"stdout","text":"tick"}
{"t":1.000,"thread":"Worker","event":"sleep","ms":1000}
{"t":2.000,"thread":"Worker","event":"thread-destroyed"}
{"t":3.000,"thread":"host","event":"call","verb":"stop rsm","result":-1}
{"t":3.000,"thread":"host","event":"log","level":40,"text":"start 1 at 1767225603 with null"}
{"t":3.000,"thread":"host","event":"call","verb":"start rsm null","result":0}
{"t":3.000,"thread":"host","event":"call","verb":"stop rsm","result":0}
{"t":3.000,"thread":"host","event":"call","verb":"stop rsm null","result":-1}
{"t":3.000,"thread":"host","event":"thread-start","name":"Worker","result":-1}
{"t":3.000,"thread":"host","event":"call","verb":"start logger 1","result":-1}
)");
}

TEST_F(SimulatorTest, ServiceAndCommandCalls) {
    EXPECT_EQ(
        replay("0 call echo\n0 start web-service\n0 call echo text=\"a<b\"\n0 call echo text=null\n"
               "0 call echo other=1\n0 call shout text=1\n0 service destroy\n0 service destroy\n"
               "0 command X a=1 b=null\n0 command X null\n0 audit \"echo from a child\"\n"),
        R"({"t":0.000,"thread":"host","event":"call","verb":"call echo","result":-1,"stage":"service","response":null}
{"t":0.000,"thread":"host","event":"call","verb":"start web-service","result":0}
{"t":0.000,"thread":"host","event":"log","level":30,"text":"cleaned up"}
{"t":0.000,"thread":"host","event":"call","verb":"call echo text=a<b","result":5,"stage":"cleanup","response":"<echoResponse><text>a&lt;b</text></echoResponse>"}
{"t":0.000,"thread":"host","event":"log","level":30,"text":"cleaned up"}
{"t":0.000,"thread":"host","event":"call","verb":"call echo text=null","result":-1,"stage":"cleanup","response":"<echoResponse/>"}
{"t":0.000,"thread":"host","event":"log","level":30,"text":"cleaned up"}
{"t":0.000,"thread":"host","event":"call","verb":"call echo other=1","result":-1,"stage":"create","response":null}
{"t":0.000,"thread":"host","event":"call","verb":"call shout text=1","result":-1,"stage":"create","response":null}
{"t":0.000,"thread":"host","event":"call","verb":"service destroy","result":0}
{"t":0.000,"thread":"host","event":"call","verb":"service destroy","result":1}
{"t":0.000,"thread":"host","event":"call","verb":"command X a=1 b=null","result":2,"answer":[["count",null]]}
{"t":0.000,"thread":"host","event":"call","verb":"command X null","result":1,"answer":null}
{"t":0.000,"thread":"host","event":"stdout","text":"from a child\n"}
{"t":0.000,"thread":"host","event":"call","verb":"audit echo from a child","result":0}
)");
}

TEST_F(SimulatorTest, FilesGetTheSimulatedTime) {
    EXPECT_EQ(replay("clock 2026-03-01T10:00:00Z\n0 show x\n0 write \"a\\\\b\" \"1\\n\"\n0 show a/b\n60 "
                     "clock-step 60\n"
                     "60 start data-source a/c\n60 audit \"stat -c '%n %Y' a/b a/c\"\n60 age a/b 0.5\n"
                     "60 audit \"stat -c %Y a/b\"\n60 remove a\n60 remove a\n60 show a/b\n"),
              R"({"t":0.000,"thread":"host","event":"file","path":"x","text":null}
{"t":0.000,"thread":"host","event":"file","path":"a/b","text":"1\n"}
{"t":60.000,"thread":"host","event":"call","verb":"start data-source a/c","result":0}
{"t":60.000,"thread":"host","event":"stdout","text":"a/b 1772359200\na/c 1772359320\n"}
{"t":60.000,"thread":"host","event":"call","verb":"audit stat -c '%n %Y' a/b a/c","result":0}
{"t":60.000,"thread":"host","event":"stdout","text":"1772316120\n"}
{"t":60.000,"thread":"host","event":"call","verb":"audit stat -c %Y a/b","result":0}
{"t":60.000,"thread":"host","event":"file","path":"a/b","text":null}
)");
}

TEST_F(SimulatorTest, FilesThatAreOnlyMadeGetItToo) {
    const std::string trace = replay(
        "clock 2026-03-01T10:00:00Z\n60 start data-source left-open\n60 audit \"stat -c %Y left-open\"\n"
        "90 start data-source left-open\n90 audit \"stat -c %Y left-open\"\n");
    const std::size_t first = trace.find(R"("text":"1772359260\n")");
    EXPECT_NE(first, std::string::npos) << trace;
    EXPECT_NE(trace.find(R"("text":"1772359260\n")", first + 1), std::string::npos) << trace;
}

TEST_F(SimulatorTest, UnloadClosesWhatTheModuleOpened) {
    const std::string count = "audit \"ls -l /proc/$PPID/fd | grep -c left-open$\"\n";
    const std::string trace = replay("0 start data-source left-open\n0 " + count + "0 unload\n0 " + count);
    EXPECT_NE(trace.find(R"("text":"1\n")"), std::string::npos) << trace;
    EXPECT_NE(trace.find(R"("text":"0\n")"), std::string::npos) << trace;
}

TEST_F(SimulatorTest, EnterpriseThatTakesItsTime) {
    const std::string record = R"("result":0,"properties":[["MODEL","KRX-7"],["SERIAL","0042"]]})";
    const std::string credentials = R"(,"thread":"host","event":"credentials","member":null})";
    EXPECT_EQ(
        replay("0 start rsm null\n0 start logger 1\n0 enterprise delay 2.5\n0 log-lock on\n0 command report\n"
               "10 enterprise thread on\n10 command report\n10 log info x\n"),
        R"({"t":0.000,"thread":"host","event":"log","level":40,"text":"start 1 at 1767225600 with null"}
{"t":0.000,"thread":"host","event":"call","verb":"start rsm null","result":0}
{"t":0.000,"thread":"host","event":"thread-start","name":"Worker","result":0}
{"t":0.000,"thread":"host","event":"call","verb":"start logger 1","result":0}
{"t":0.000,"thread":"Worker","event":"sleep","ms":1000}
{"t":0.000)" +
            credentials + R"(
{"t":1.000,"thread":"Worker","event":"force-poll"}
{"t":1.000,"thread":"Worker","event":"stdout","text":"tick"}
{"t":1.000,"thread":"Worker","event":"thread-end","result":7}
{"t":2.500,"thread":"host","event":"update-asset",)" +
            record + R"(
{"t":2.500,"thread":"host","event":"call","verb":"command report","result":0,"answer":null}
{"t":10.000)" +
            credentials + R"(
{"t":10.000,"thread":"Link","event":"log","level":30,"text":"Registration: sending the record of device-0042\n"}
{"t":12.500,"thread":"host","event":"update-asset",)" +
            record + R"(
{"t":12.500,"thread":"host","event":"stdout","text":"<30 Registration: sending the record of device-0042\n>"}
{"t":12.500,"thread":"host","event":"call","verb":"command report","result":0,"answer":null}
{"t":12.500,"thread":"host","event":"stdout","text":"<30 x>"}
{"t":12.500,"thread":"host","event":"call","verb":"log info x","result":0}
)");
}

TEST_F(SimulatorTest, ThreadDestroyedInTheMiddleOfAReport) {
    // The worker reports from 1 to 11 seconds; from 2 to 5 the host waits for its end.
    const std::string scenario =
        "0 start rsm null\n0 start logger 2\n0 enterprise delay 10\n0 command reports null\n2 stop "
        "logger\n20 end\n";
    const std::string stopped = R"({"t":5.000,"thread":"Worker","event":"thread-destroyed"}
{"t":5.000,"thread":"host","event":"stdout","text":"tick"}
{"t":5.000,"thread":"host","event":"call","verb":"stop logger","result":-1}
)";
    const std::string reported =
        R"({"t":11.000,"thread":"Worker","event":"update-asset","result":0,"properties":[["MODEL","KRX-7"],["SERIAL","0042"]]}
{"t":11.000,"thread":"Worker","event":"log","level":30,"text":"unwound"}
)";
    const std::pair<const char*, std::string> cases[] = {
        {"sleep", stopped + reported},
        {"anywhere", stopped},
        {"unwind", R"({"t":5.000,"thread":"Worker","event":"log","level":30,"text":"unwound"}
)" + stopped},
        {"leave", stopped + reported + R"({"t":11.000,"thread":"Worker","event":"sleep","ms":1000}
{"t":12.000,"thread":"Worker","event":"force-poll"}
{"t":12.000,"thread":"Worker","event":"credentials","member":null}
)"},
    };
    for (const auto& [how, expected] : cases) {
        const std::string trace =
            replay(std::string("0 thread-destroy ") + how + "\n0 route off\n" + scenario);
        const std::size_t end = trace.find("{\"t\":5.000");
        EXPECT_EQ(trace.substr(std::min(end, trace.size())), expected) << how;
    }
}

TEST_F(SimulatorTest, HangsAreTold) {
    const std::string start = "0 start rsm null\n0 start logger 9\n";
    const std::pair<const char*, const char*> cases[] = {
        // The worker holds the module's lock while it reports.
        {"0 enterprise delay 5\n0 command reports null\n2 command lock null\n",
         "host waits in command lock null; "
         "Worker waits in its entry function, UpdateAsset, the answer of the enterprise until 6.000\n"},
        // The host reports in the log hook, and the link's own line waits for the log.
        {"0 enterprise thread on\n0 log-lock on\n2 command log null\n",
         "host waits in command log null, KRXLog, the log hook, UpdateAsset; Link waits in KRXLog\n"},
        // The host sleeps without letting time pass.
        {"0 command reports null\n0 command spin null\n", "host waits in command spin null"},
    };
    for (const auto& [scenario, message] : cases) {
        const Outcome outcome =
            simulate("replay scenario --patience 0.2 --trace trace --report page --module '" FAKE_MODULE "'",
                     start + scenario);
        EXPECT_EQ(outcome.status, 1) << scenario;
        EXPECT_TRUE(outcome.output.starts_with(std::string("the module hangs: ") + message))
            << outcome.output;
        EXPECT_TRUE(contents("trace").ends_with("}\n"));
        EXPECT_NE(contents("page").find("</html>"), std::string::npos);
    }
}

TEST_F(SimulatorTest, WaitingForAProgramIsNoHang) {
    EXPECT_EQ(simulate("replay scenario --patience 0.1 --module '" FAKE_MODULE "'", "0 audit \"sleep 0.4\"\n")
                  .status,
              0);
}

TEST_F(SimulatorTest, RunTakesTypedVerbs) {
    const Outcome typed = simulate("run --module '" FAKE_MODULE "' --trace - <scenario",
                                   "start rsm null\nnonsense\nstop rsm\nend\naudit x\n");
    EXPECT_EQ(typed.status, 1);
    EXPECT_NE(typed.output.find("<stdin>:2: unknown verb 'nonsense'"), std::string::npos) << typed.output;
    EXPECT_NE(typed.output.find(R"("verb":"stop rsm","result":0)"), std::string::npos) << typed.output;
    EXPECT_EQ(typed.output.find("audit x"), std::string::npos) << typed.output;
}

TEST_F(SimulatorTest, HelpShowsForms) {
    const Outcome typed =
        simulate("run --module '" FAKE_MODULE "' <scenario", "help enterprise\nhelp x\nquit\n");
    EXPECT_EQ(typed.status, 0);
    EXPECT_EQ(typed.output,
              "  enterprise accept|refuse                          how the enterprise answers a profile\n"
              "  enterprise delay SECONDS                          how long it takes to answer\n"
              "  enterprise thread on|off                          whether profiles are sent on a thread of "
              "their own\n"
              "  no verb begins with 'x'\n");
}

TEST_F(SimulatorTest, BriefTimeline) {
    const Outcome brief = simulate("replay scenario --brief --module '" FAKE_MODULE "'",
                                   "0 start rsm null\n0 start logger 3\n1 fail thread-start\n"
                                   "10 start logger 1\n10 command " +
                                       std::string(80, 'x') + " null\n10 show " + std::string(54, 'y') +
                                       "\xc3\xb6\xc3\xb6" + std::string(60, 'y') + "\n");
    EXPECT_EQ(brief.status, 0);
    EXPECT_EQ(brief.output,
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
    const Outcome brief = simulate("replay scenario --brief --module '" FAKE_MODULE "'", scenario);
    EXPECT_TRUE(brief.output.starts_with("The agent has not started the module yet.\n")) << brief.output;
    const std::size_t polls = brief.output.find("2 polls, the last at 2.000 s\n");
    const std::size_t status = brief.output.find("  polls          2 made");
    EXPECT_LT(polls, status) << brief.output;
    EXPECT_NE(status, std::string::npos) << brief.output;
    const Outcome trace = simulate("replay scenario --trace trace --module '" FAKE_MODULE "'", scenario);
    EXPECT_TRUE(trace.output.starts_with("The agent has not started the module yet.\n")) << trace.output;
    EXPECT_EQ(contents("trace").find("status"), std::string::npos);
}

TEST_F(SimulatorTest, StrictTellsFailedStarts) {
    const std::pair<const char*, int> cases[] = {
        {"0 start rsm x\n0 stop rsm null\n", 0},
        {"0 fail thread-start\n0 start logger 1\n0 start rsm x\n", 3},
        {"0 fail thread-start\n0 start logger 1\n0 age none 1\n", 1}};
    for (const auto& [scenario, status] : cases) {
        EXPECT_EQ(simulate("replay scenario --strict --module '" FAKE_MODULE "'", scenario).status, status)
            << scenario;
    }
}

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
    write("scenario", scenario);
    const std::string path = (directory_ / "scenario").string();
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

TEST_F(SimulatorTest, StatusAndMessage) {
    struct Case {
        const char* arguments;
        const char* scenario;
        int status;
        const char* message;
    };
    const Case cases[] = {
        {"--help", "", 0, "Usage: krx-agent-sim replay SCENARIO"},
        {"--version", "", 0, "krx-agent-sim "},
        {"", "", 2, "no command"},
        {"play", "", 2, "unknown command play"},
        {"replay", "", 2, "no scenario to replay"},
        {"replay a b", "", 2, "unexpected argument b"},
        {"run --trace", "", 2, "no value for option --trace"},
        {"run --fast", "", 2, "unknown option --fast"},
        {"replay scenario --brief --trace x", "", 2, "--brief is for the timeline"},
        {"run --patience 0", "", 2, "'0' is no time in seconds"},
        {"replay missing", "", 1, "missing: No such file or directory"},
        {"replay scenario", "# x\n1 leap\n", 1, "scenario:2: unknown verb 'leap'"},
        {"replay scenario", "1 age x 1\n", 1, "scenario:1: x: No such file or directory"},
        {"replay scenario --module ./none", "\n0 asset absent\n1 stop logger\n", 1,
         "scenario:3: cannot load the module: ./none"},
        {"replay scenario --module '" NO_MODULE "'", "0 stop logger\n", 1,
         "does not export ZPRSMExtnStartup"},
        {"replay scenario --module '" FAKE_MODULE "'", "0 audit \"mkfifo f\"\n0 show f\n", 1,
         "scenario:2: f: is no regular file"},
        {"replay scenario --module '" FAKE_MODULE "'", "0 audit \"mkfifo f\"\n0 write f x\n", 1,
         "scenario:2: f: is no regular file"},
        {"replay scenario --trace none/trace", "0 end\n", 1, "none/trace: No such file or directory"},
        {"replay scenario --trace /dev/full", "0 show x\n", 1,
         "/dev/full: cannot write: No space left on device"},
        {"run scenario </dev/null", "0.02 show x\n", 0, "file: x holds nothing"},
        {"replay scenario --trace /dev/stdout", "0 show x\n", 0,
         "\"event\":\"file\",\"path\":\"x\",\"text\":null"},
    };
    for (const Case& each : cases) {
        const Outcome outcome = simulate(each.arguments, each.scenario);
        EXPECT_EQ(outcome.status, each.status) << each.arguments;
        EXPECT_NE(outcome.output.find(each.message), std::string::npos) << each.arguments << "\n"
                                                                        << outcome.output;
    }
}

}  // namespace
