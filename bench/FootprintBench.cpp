// What the module takes in an idle host: libraries that were not there before, and memory of its own.
#include "Child.h"
#include "Module.h"

#include <cstdio>
#include <fstream>
#include <iterator>
#include <set>
#include <string>

#include <dlfcn.h>

namespace {

constexpr long kLibraryBar = 1;
constexpr long kMemoryBar = 128;  // KiB

struct Taken {
    long libraries;
    long memory;  ///< KiB that nobody shares
};

/// The files of which parts are mapped as code.
std::set<std::string> mappedLibraries() {
    std::set<std::string> found;
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        if (line.find(" r-xp ") != std::string::npos && line.find('/') != std::string::npos) {
            found.insert(line.substr(line.find('/')));
        }
    }
    return found;
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

Taken measure(const bench::Scratch& scratch, const std::string& configuration) {
    return bench::inChild([&] {
        agent::AgentHost host;
        const auto libraries = static_cast<long>(mappedLibraries().size());
        const long memory = anonymousMemory();
        const agent::Module module(BENCH_MODULE);
        void* handle = nullptr;
        module.ZPXRSMDSStartup(&handle, scratch.path("schedule.xml").c_str());
        module.ZPRSMExtnStartup(&handle, reinterpret_cast<ZPServiceAgent*>(host.serviceAgent()),
                                configuration.c_str());
        module.ZPXRSMLoggerStatup(configuration.c_str());
        module.ZPXRSMWSStartup(&handle, reinterpret_cast<ZPServiceAgent*>(host.serviceAgent()));
        return Taken{static_cast<long>(mappedLibraries().size()) - libraries - 1, anonymousMemory() - memory};
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
    const Taken taken = measure(scratch, configuration);
    const auto tell = [&](const char* what, long value, long bar) {
        std::fprintf(table, "%-62s %6ld %6ld%s\n", what, value, bar, value > bar ? ", missed" : "");
        return value <= bar;
    };
    std::fprintf(table, "%-62s %6s %6s\n", "an idle host, four families started, less the host before",
                 "value", "bar");
    const bool few = tell("libraries beside the module's own", taken.libraries, kLibraryBar);
    const bool little = tell("private memory, KiB", taken.memory, kMemoryBar);
    return few && little ? 0 : 1;
}
