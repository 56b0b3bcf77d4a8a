// What loading and starting the module costs, each time in a process of its own, and what it holds when idle.
#include "Module.h"
#include "Report.h"

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <malloc.h>
#include <spawn.h>
#include <sstream>
#include <type_traits>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr int kRounds = 100;
constexpr int kReplays = 20;
constexpr double kHalfSecond = 5e8;  // ns

/// Runs `body` in a process of its own and hands its result over.
template <typename Body>
auto inChild(Body&& body) {
    std::invoke_result_t<Body> result{};
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) {
        return result;
    }
    const pid_t child = ::fork();
    if (child == 0) {
        result = body();
        ::_exit(::write(ends[1], &result, sizeof result) == sizeof result ? 0 : 1);
    }
    ::close(ends[1]);
    [[maybe_unused]] const ssize_t size = ::read(ends[0], &result, sizeof result);
    ::close(ends[0]);
    ::waitpid(child, nullptr, 0);
    return result;
}

template <typename Step>
double timed(Step&& step) {
    const auto start = std::chrono::steady_clock::now();
    step();
    return std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now() - start).count();
}

void* load(const char* library) {
    void* const handle = ::dlopen(library, RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) {
        std::fprintf(stderr, "%s\n", ::dlerror());
        ::_exit(1);
    }
    return handle;
}

template <typename... Arguments>
void call(void* library, const char* name, Arguments... arguments) {
    reinterpret_cast<void (*)(Arguments...)>(::dlsym(library, name))(arguments...);
}

double timeOfLoading(const char* library) {
    return inChild([=] { return timed([=] { load(library); }); });
}

/// Replays a day in which the agent is polled every 10 seconds. The whole process's time.
double timeOfDay(const bench::Scratch& scratch, const std::string& configuration) {
    const std::string scenario = scratch.path("day.scenario");
    std::ofstream(scenario)
        << "0 start data-source " << scratch.path("schedule.xml") << "\n0 start rsm " << configuration
        << "\n0 start logger " << configuration
        << "\n0 start web-service\n0 connect 1440 10\n86401 stop rsm\n86401 stop logger\n";
    std::string words[] = {BENCH_SIMULATOR, "replay", scenario, "--trace", scratch.path("day.trace")};
    char* arguments[] = {words[0].data(), words[1].data(), words[2].data(),
                         words[3].data(), words[4].data(), nullptr};
    return timed([&] {
        pid_t child = 0;
        int status = 1;
        if (::posix_spawn(&child, BENCH_SIMULATOR, nullptr, nullptr, arguments, environ) == 0) {
            ::waitpid(child, &status, 0);
        }
        if (status != 0) {
            std::fprintf(stderr, "the replay failed\n");
        }
    });
}

struct Holdings {
    std::ptrdiff_t threads;
    std::ptrdiff_t descriptors;
    std::ptrdiff_t heapBytes;

    static Holdings now() {
        const auto entries = [](const char* directory) {
            return std::distance(std::filesystem::directory_iterator(directory), {});
        };
        return {entries("/proc/self/task"), entries("/proc/self/fd"),
                static_cast<std::ptrdiff_t>(::mallinfo2().uordblks)};
    }
};

/// A line on what a process holds more after `hold` than before, `library` being loaded.
template <typename Hold>
std::string held(const char* what, const char* library, Hold&& hold) {
    const Holdings more = inChild([&] {
        agent::AgentHost host;
        void* const loaded = load(library);
        const Holdings before = Holdings::now();
        hold(loaded, host.serviceAgent());
        const Holdings after = Holdings::now();
        return Holdings{after.threads - before.threads, after.descriptors - before.descriptors,
                        after.heapBytes - before.heapBytes};
    });
    std::ostringstream line;
    line << what << more.threads << " threads, " << more.descriptors << " descriptors, " << more.heapBytes
         << " bytes of heap\n";
    return line.str();
}

std::string settings() {
    const bench::Scratch scratch;
    const std::string configuration = writeConfiguration(scratch);
    const std::string schedule = scratch.path("schedule.xml");
    return "Medians of " + std::to_string(kRounds) + " processes each (replay: " + std::to_string(kReplays) +
           ") in turn; configuration of " + std::to_string(std::filesystem::file_size(configuration)) +
           " bytes\n" +
           held("dlopen of the module, Expat being there, takes       ", BENCH_EXPAT_PROBE,
                [](void*, ZPServiceAgent*) { load(BENCH_MODULE); }) +
           held("the four start-ups take, while RSM is idle           ", BENCH_MODULE,
                [&](void* module, ZPServiceAgent* serviceAgent) {
                    void* handle = nullptr;
                    call(module, "ZPXRSMDSStartup", &handle, schedule.c_str());
                    call(module, "ZPRSMExtnStartup", &handle, serviceAgent, configuration.c_str());
                    call(module, "ZPXRSMLoggerStatup", configuration.c_str());
                    call(module, "ZPXRSMWSStartup", &handle, serviceAgent);
                });
}

using Measurement = double (*)(const bench::Scratch& scratch, const std::string& configuration);

void define(const char* name, Measurement subject, Measurement reference, int rounds, bench::Bar bar = {}) {
    benchmark::RegisterBenchmark(name,
                                 [=](benchmark::State& state) {
                                     for (auto _ : state) {
                                         const bench::Scratch scratch;
                                         const std::string file = writeConfiguration(scratch);
                                         const auto measure = [&] {
                                             return bench::compare([&] { return subject(scratch, file); },
                                                                   [&] { return reference(scratch, file); },
                                                                   rounds);
                                         };
                                         bench::report(state, measure, bar);
                                     }
                                 })
        ->Iterations(1)
        ->UseManualTime();
}

}  // namespace

int main(int argumentCount, char** arguments) {
    using bench::Scratch;
    define(
        "dlopen of the module / of one that needs the same",
        [](const Scratch&, const std::string&) { return timeOfLoading(BENCH_MODULE); },
        [](const Scratch&, const std::string&) { return timeOfLoading(BENCH_EXPAT_PROBE); }, kRounds,
        {2.5, {}});
    define("replay of a day, poll every 10 s / 0.5 s", timeOfDay,
           [](const Scratch&, const std::string&) { return kHalfSecond; }, kReplays, {1.0, {}});
    return bench::run(argumentCount, arguments, settings);
}
