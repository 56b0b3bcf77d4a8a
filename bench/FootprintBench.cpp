// What the module takes in an idle host: libraries that were not there before, and memory of its own.
#include "Child.h"
#include "Module.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <memory>
#include <string>

namespace {

constexpr long kLibraryBar = 1;
constexpr long kMemoryBar = 128;  // KiB

/// Those that the module needs and a C++ program with the agent's library has not got by itself.
long furtherLibraries() {
    static constexpr std::array kThere{"linux-vdso", "ld-linux", "libkrx-agent", "libstdc++",
                                       "libgcc_s",   "libm.",    "libc."};
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> list(::popen("ldd " BENCH_MODULE, "r"), ::pclose);
    std::array<char, 512> line{};
    long count = 0;
    while (list != nullptr && std::fgets(line.data(), static_cast<int>(line.size()), list.get()) != nullptr) {
        count += std::none_of(kThere.begin(), kThere.end(),
                              [&](const char* name) { return std::strstr(line.data(), name) != nullptr; });
    }
    return count;
}

long anonymousMemory() {
    std::ifstream rollup("/proc/self/smaps_rollup");
    long kibibytes = 0;
    for (std::string word; rollup >> word;) {
        if (word == "Anonymous:") {
            rollup >> kibibytes;
        }
    }
    return kibibytes;
}

/// Of a host that has started all and waits, less what it used before.
long privateMemory(const bench::Scratch& scratch, const std::string& configuration) {
    return bench::inChild([&] {
        agent::AgentHost host;
        const long before = anonymousMemory();
        const agent::Module module(BENCH_MODULE);
        auto* const serviceAgent = reinterpret_cast<ZPServiceAgent*>(host.serviceAgent());
        void* handle = nullptr;
        module.ZPXRSMDSStartup(&handle, scratch.path("schedule.xml").c_str());
        module.ZPRSMExtnStartup(&handle, serviceAgent, configuration.c_str());
        module.ZPXRSMLoggerStatup(configuration.c_str());
        module.ZPXRSMWSStartup(&handle, serviceAgent);
        return anonymousMemory() - before;
    });
}

}  // namespace

int main() {
    std::FILE* const table = ::fdopen(::dup(STDOUT_FILENO), "w");
    if (table == nullptr || std::freopen("/dev/null", "w", stdout) == nullptr) {
        return 2;
    }
    const bench::Scratch scratch;
    const std::string configuration = writeConfiguration(scratch);
    const auto tell = [&](const char* what, long value, long bar) {
        std::fprintf(table, "%-58s %6ld %6ld%s\n", what, value, bar, value > bar ? "  missed" : "");
        return value <= bar;
    };
    std::fprintf(table, "%-58s %6s %6s\n", "what the module takes in a host", "value", "bar");
    const bool few =
        tell("libraries that a C++ program has not got by itself", furtherLibraries(), kLibraryBar);
    const bool little = tell("private memory, four families started and idle, KiB",
                             privateMemory(scratch, configuration), kMemoryBar);
    return few && little ? 0 : 1;
}
