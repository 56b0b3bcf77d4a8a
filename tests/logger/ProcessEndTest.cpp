// A process that ends while another thread of it loads a configuration: by whatever way it ends, it ends well.
#include "lib/AgentHost.h"
#include "lib/Module.h"
#include "support/Rows.h"
#include "support/Workspace.h"

#include <chrono>
#include <cstdlib>
#include <string>
#include <thread>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr int kProcesses = 20;

[[noreturn]] void loadAndEnd(const std::string& configuration, void (*end)(int), int delay) {
    const agent::AgentHost host;
    const agent::Module& module =
        *new agent::Module(MODULE);  // stays loaded when objects of the process are destroyed
    std::thread([&module, &configuration] {
        for (;;) {
            module.ZPXRSMLoggerStatup(configuration.c_str());
        }
    }).detach();
    std::this_thread::sleep_for(std::chrono::microseconds(delay));
    end(0);
    std::abort();
}

struct EndRow {
    support::RowName name;
    const char* configuration;
    void (*end)(int);
};

const support::Rows<EndRow> endRows(
    "ProcessEnd/BesideALoad",
    {{"exit, good configuration", "<z><Script>s</Script></z>", [](int status) { std::exit(status); }},
     {"exit, refused configuration", "<z><Script>", [](int status) { std::exit(status); }},
     {"quick_exit, good configuration", "<z><Script>s</Script></z>",
      [](int status) { std::quick_exit(status); }},
     {"quick_exit, refused configuration", "<z><Script>", [](int status) { std::quick_exit(status); }},
     {"immediate exit, good configuration", "<z><Script>s</Script></z>", [](int status) { ::_exit(status); }},
     {"immediate exit, refused configuration", "<z><Script>", [](int status) { ::_exit(status); }}},
    [](const EndRow& row) {
        const support::Workspace workspace;
        workspace.write("config.xml", row.configuration);
        const std::string configuration = workspace.path("config.xml").string();
        for (int i = 0; i < kProcesses; ++i) {
            const ::pid_t child = ::fork();
            if (child == 0) {
                loadAndEnd(configuration, row.end, i * 100);
            }
            int status = 0;
            ::waitpid(child, &status, 0);
            EXPECT_EQ(status, 0) << "after " << i * 100 << " us";
        }
    });

}  // namespace
