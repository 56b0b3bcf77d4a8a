// What loading and starting the module costs, each time in a process of its own, and what it holds when idle.
#include "Child.h"
#include "Module.h"
#include "Report.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <malloc.h>
#include <spawn.h>
#include <sstream>

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr int kRounds = 100;
constexpr int kReplays = 20;
constexpr int kRoundsOfMany = 3;
constexpr int kManyFiles = 100'000;
constexpr char kLogName[] = "agent-log.xml";
constexpr double kHalfSecond = 5e8;  // ns

using bench::inChild;

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

/// Hands the name of each entry of a held directory to `look`.
template <typename Look>
void listed(int held, Look&& look) {
    DIR* const stream = ::fdopendir(::openat(held, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    while (const dirent* entry = ::readdir(stream)) {
        look(entry->d_name);
    }
    ::closedir(stream);
}

double timeOfLoading(const char* library) {
    return inChild([=] { return timed([=] { load(library); }); });
}

/// Starts the four families in the order in which an agent does.
void startAll(void* module, ZPServiceAgent* serviceAgent, const bench::Scratch& scratch,
              const std::string& configuration) {
    void* handle = nullptr;
    call(module, "ZPXRSMDSStartup", &handle, scratch.path("schedule.xml").c_str());
    call(module, "ZPRSMExtnStartup", &handle, serviceAgent, configuration.c_str());
    call(module, "ZPXRSMLoggerStatup", configuration.c_str());
    call(module, "ZPXRSMWSStartup", &handle, serviceAgent);
}

double timeOfStarts(const bench::Scratch& scratch, const std::string& configuration) {
    return inChild([&] {
        agent::AgentHost host;
        void* const module = load(BENCH_MODULE);
        return timed([&] { startAll(module, host.serviceAgent(), scratch, configuration); });
    });
}

double timeOfLoggerStart(const std::string& configuration) {
    return inChild([&] {
        const agent::AgentHost host;
        const agent::Module library(BENCH_MODULE);
        return timed([&] { library.ZPXRSMLoggerStatup(configuration.c_str()); });
    });
}

/// What the four starts ask the system for, made one after the other by hand.
double timeOfCalls(const bench::Scratch& scratch, const std::string& configuration) {
    const std::string schedule = scratch.path("schedule.xml");
    const std::string directory = scratch.path("");
    return inChild([&] {
        return timed([&] {
            struct stat status {};
            struct statx seen {};
            rlimit limit{};
            std::array<char, 4096> contents{};
            const auto openRegular = [&](int place, const char* path, int flags) {
                ::getrlimit(RLIMIT_FSIZE, &limit);
                ::fstatat(place, path, &status, 0);
                const int descriptor = ::openat(place, path, flags | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, 0666);
                ::fstat(descriptor, &status);
                return descriptor;
            };
            const int kept = openRegular(AT_FDCWD, schedule.c_str(), O_RDWR | O_CREAT);
            ::lseek(kept, 0, SEEK_END);
            for (int load = 0; load < 2; ++load) {  // by the second family and by the third
                const int file = openRegular(AT_FDCWD, configuration.c_str(), O_RDONLY);
                ::lseek(file, 0, SEEK_END);
                benchmark::DoNotOptimize(::pread(file, contents.data(), contents.size(), 0));
                ::close(file);
            }
            openRegular(AT_FDCWD, "", O_RDWR);  // no state was to be kept
            const int held = ::open(directory.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
            listed(held, [&](const char* name) { ::fstatat(held, name, &status, AT_SYMLINK_NOFOLLOW); });
            ::close(held);
            const int place = ::open(directory.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
            const int log = openRegular(place, kLogName, O_WRONLY | O_APPEND | O_CREAT);
            ::statx(log, "", AT_EMPTY_PATH, STATX_SIZE, &seen);
        });
    });
}

/// As many files as a log that is rotated each minute makes in ten weeks, last written so many days ago.
void fill(const bench::Scratch& scratch, int days) {
    const std::string beginning = scratch.path("agent-log2026_1_1_1_1_");
    if (std::filesystem::exists(beginning + std::to_string(kManyFiles - 1) + ".xml")) {
        return;
    }
    const timespec time{::time(nullptr) - days * 86400, 0};
    const timespec times[] = {time, time};
    for (int i = 0; i < kManyFiles; ++i) {
        const int file =
            ::open((beginning + std::to_string(i) + ".xml").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666);
        ::futimens(file, times);
        ::close(file);
    }
}

template <int days>
double timeOfStartAmongMany(const bench::Scratch& scratch, const std::string& configuration) {
    fill(scratch, days);
    return timeOfLoggerStart(configuration);
}

/// Each name with its age, and old files are removed.
template <int days>
double timeOfListingMany(const bench::Scratch& scratch, const std::string& /*configuration*/) {
    fill(scratch, days);
    return inChild([&] {
        const int held = ::open(scratch.path("").c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
        const std::time_t before = ::time(nullptr) - 30 * 86400;
        return timed([&] {
            listed(held, [&](const char* name) {
                struct stat status {};
                if (::fstatat(held, name, &status, AT_SYMLINK_NOFOLLOW) == 0 && status.st_mtime < before) {
                    ::unlinkat(held, name, 0);
                }
            });
        });
    });
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
    return "Medians of " + std::to_string(kRounds) + " processes each (replay: " + std::to_string(kReplays) +
           ", many files: " + std::to_string(kRoundsOfMany) + ") in turn; configuration of " +
           std::to_string(std::filesystem::file_size(configuration)) + " bytes\n" +
           held("dlopen of the module takes                           ", BENCH_EXPAT_PROBE,
                [](void*, ZPServiceAgent*) { load(BENCH_MODULE); }) +
           held("the four start-ups take, while RSM is idle           ", BENCH_MODULE,
                [&](void* module, ZPServiceAgent* serviceAgent) {
                    startAll(module, serviceAgent, scratch, configuration);
                });
}

using Measurement = double (*)(const bench::Scratch& scratch, const std::string& configuration);

void define(const char* name, Measurement subject, Measurement reference, int rounds,
            bench::Bar bar = std::nullopt) {
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
        "dlopen of the module / of C++ and Expat",
        [](const Scratch&, const std::string&) { return timeOfLoading(BENCH_MODULE); },
        [](const Scratch&, const std::string&) { return timeOfLoading(BENCH_EXPAT_PROBE); }, kRounds, 2.5);
    define("the four starts / their system calls", timeOfStarts, timeOfCalls, kRounds, 3.5);
    define("start among 100000 young files / listing", timeOfStartAmongMany<1>, timeOfListingMany<1>,
           kRoundsOfMany, 1.5);
    define("start with 100000 old files / unlinking", timeOfStartAmongMany<99>, timeOfListingMany<99>,
           kRoundsOfMany, 1.5);
    define(
        "replay of a day, poll every 10 s / 0.5 s", timeOfDay,
        [](const Scratch&, const std::string&) { return kHalfSecond; }, kReplays, 1.0);
    return bench::run(argumentCount, arguments, settings);
}
