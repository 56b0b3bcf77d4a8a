// What several threads do at once, in every order of their turns.
#include "Explorer.h"
#include "Host.h"
#include "support/Rows.h"

#include <cstdlib>
#include <cstring>
#include <iostream>
#include <malloc.h>
#include <optional>

#include <gtest/gtest.h>

namespace {

int preemptions = 1;
std::optional<Turns> only;

struct Scene {
    support::RowName name;
    std::function<void(Host&)> before;  ///< what the clients find
    int polls;                          ///< after which they come
    std::vector<Host::Client> clients;
};

void explore(const Scene& scene, bool killed) {
    static Host host;  // one for all, which play with copies: a lock has its place among those of the process
    constexpr const char* kKiller = "killer";
    Explorer explorer(preemptions, killed ? kKiller : nullptr, only ? &*only : nullptr);
    const std::string failure = explorer.explore([&] {
        std::vector<Host::Client> clients = scene.clients;
        if (killed) {
            clients.emplace_back(kKiller, [](Host& self) { self.killThread(); });
        }
        host.begin();
        scene.before(host);
        host.play(clients, scene.polls);
        return host.judge();
    });
    EXPECT_EQ(failure, "");
    std::cout << explorer.runs() << " orders of turns\n";
}

const auto nothing = [](Host& /*host*/) {};
const auto polling = [](Host& host) {
    host.connect("1", "20");
    host.pass(1000);
};
const auto connect = [](Host& host) { host.connect("1", "20"); };
const auto order = [](const char* time) { return [time](Host& host) { host.schedule(time); }; };
const auto log = [](const char* text) { return [text](Host& host) { host.log(text); }; };
const auto stop = [](Host& host) { host.stop(); };
const auto waiting = [](Host& host) { host.schedule("12:00:00"), host.pass(1000); };

const Scene kScenes[] = {
    {"order and stop",
     nothing,
     0,
     {{"order", [](Host& host) { host.log("an entry"), host.schedule("12:00:00"); }}, {"stop", stop}}},
    {"two orders",
     [](Host& host) { host.answerSlowly(Host::kEverybody); },
     0,
     {{"first", order("12:00:00")}, {"second", order("13:00:00")}}},
    {"two orders and a start that fails",
     [](Host& host) { host.failNextStart(); },
     0,
     {{"first", connect}, {"second", connect}}},
    {"two orders, of which sending awaits one",
     [](Host& host) { waiting(host), host.answerAfterAnOrder(); },
     0,
     {{"first", order("13:00:00")}, {"second", order("14:00:00")}}},
    {"connect and the thread's end", polling, 3, {{"connect", connect}}},
    {"a second start at the thread's end",
     polling,
     3,
     {{"connect", connect}, {"start", [](Host& host) { host.startAgain(); }}}},
    {"disconnect and due start",
     [](Host& host) {
         host.connect("10", "30");
         host.schedule("10:01:20");
         host.pass(85000);
     },
     3,
     {{"disconnect", [](Host& host) { host.disconnect(); }}}},
    {"report and change",
     [](Host& host) { host.answerSlowly("Data Polling"); },
     0,
     {{"first", order("12:00:00")},
      {"second",
       [](Host& host) {
           host.pass(500);
           for (const char* time : {"13:00:00", "13:01:00", "13:02:00", "13:03:00", "13:04:00"}) {
               host.schedule(time);
               host.pass(800);
           }
       }}}},
    {"activity and end",
     polling,
     3,
     {{"activity", [](Host& host) { host.audit("opened"), host.audit("closed"); }}}},
    {"activity in two threads",
     polling,
     0,
     {{"opens", [](Host& host) { host.log("one entry"), host.audit("opened"); }},
      {"closes", [](Host& host) { host.log("another entry"), host.audit("closed"); }}}},
    {"start and stop",
     waiting,
     0,
     {{"stop", stop}, {"start", [](Host& host) { host.start(), host.log("an entry"); }}}},
    {"message and stop, without a logger",
     [](Host& host) { host.stop(), host.startAgain(); },
     0,
     {{"message", [](Host& host) { host.audit("opened"); }}, {"stop", stop}}},
    {"lines that nobody reads",
     [](Host& host) { host.readLate(); },
     0,
     {{"first", log("one entry")}, {"second", log("another entry")}, {"third", log("a third entry")}}},
};

const bool registered = [] {
    for (const Scene& scene : kScenes) {
        support::registerRow("Interleavings", scene.name, [&scene] { explore(scene, false); });
        support::registerRow("Interleavings",
                             {scene.name.text + ", and a kill", scene.name.file, scene.name.line},
                             [&scene] { explore(scene, true); });
    }
    return true;
}();

}  // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    ::mallopt(M_PERTURB, 0xA5);  // who uses what is gone fails
    for (int i = 1; i < argc; ++i) {
        const std::string option = argv[i];
        const std::string value = option.substr(std::min(option.find('=') + 1, option.size()));
        if (option.starts_with("--preemptions=")) {
            preemptions = std::atoi(value.c_str());
        } else if (option.starts_with("--without=")) {
            turns::without = static_cast<std::size_t>(std::atoi(value.c_str()));
            turns::steps = value.ends_with("s");
        } else if (option.starts_with("--turns=")) {
            only = parseTurns(value);
        } else {
            std::cerr << "interleavings [--gtest_filter=...] [--preemptions=N] [--turns=...] [--without=N]\n";
            return 2;
        }
    }
    return RUN_ALL_TESTS();
}
