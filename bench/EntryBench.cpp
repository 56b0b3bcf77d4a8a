// What one message costs.
#include "Module.h"
#include "Report.h"
#include "Rivals.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using bench::Bar;
using bench::compare;
using bench::report;
using bench::roundOf;
using bench::Time;

constexpr int kRounds = 200;
constexpr int kEntries = 500;           // of one round, on each thread
constexpr int kLargeOperations = 20;    // likewise, of a megabyte each
constexpr int kCheapOperations = 5000;  // likewise, where no system call is made

const std::string kMessage =
    "Poll of the enterprise server ended after 1234 ms, 3 packages received, next poll in 60 s.\n";
// Full of beginnings of the configured texts, as such a message would be; it matches none.
const std::string kAuditMessage =
    "Service user operator-7 opened a Session from 10.20.30.40, Remote file /var/opt/agent/settings.xml "
    "Uploaded, File size 48211 bytes, transfer rate 1.2 MB/s, success\n";

struct Fixture {
    explicit Fixture(int texts = 4, const std::string& logLevel = "info")
        : module(writeConfiguration(scratch, texts, logLevel)) {}

    bench::Scratch scratch;
    bench::Module module;
    bench::Floor floor{scratch.path("floor.log"), kMessage};
    bench::SpdlogFile spdlog{scratch.path("spdlog.log"), kMessage};
};

template <typename Against>
void entry(benchmark::State& state, int threads, Against&& against, Bar bar, Time time) {
    for (auto _ : state) {
        Fixture fixture;
        const auto logged =
            roundOf([&] { fixture.module.log(ZP_LEVEL_INFO, kMessage.c_str()); }, kEntries, threads, time);
        const auto other = roundOf([&] { against(fixture); }, kEntries, threads, time);
        report(
            state, [&] { return compare(logged, other, kRounds); }, bar);
    }
}

void rejected(benchmark::State& state) {
    for (auto _ : state) {
        Fixture fixture;
        const auto logged =
            roundOf([&] { fixture.module.log(ZP_LEVEL_TRACE, kMessage.c_str()); }, kCheapOperations);
        const auto echoed = roundOf([&] { std::fputs(kMessage.c_str(), stdout); }, kCheapOperations);
        report(state, [&] { return compare(logged, echoed, kRounds); });
    }
}

/// Of a megabyte the file takes the beginning; standard output takes all.
void large(benchmark::State& state) {
    for (auto _ : state) {
        Fixture fixture;
        const std::string message(1'000'000, 'm');
        const auto logged =
            roundOf([&] { fixture.module.log(ZP_LEVEL_INFO, message.c_str()); }, kLargeOperations);
        const auto echoed = roundOf([&] { bench::echo(message); }, kLargeOperations);
        report(state, [&] { return compare(logged, echoed, kRounds); });
    }
}

/// The same message as audit message, and as log message with a plain search for each text behind it. The file's part
/// is left out of both, since the machine's noise in it is larger than the search.
void audit(benchmark::State& state, int count, Bar bar) {
    constexpr int kSearches = 100'000;  // of one round
    const int operations = std::clamp(kSearches / count, 10, kCheapOperations);
    std::vector<std::string> texts;
    for (int i = 0; i < count; ++i) {
        texts.push_back(bench::activityText(i));
    }
    for (auto _ : state) {
        Fixture fixture(count, "error");
        // While something is open, its closing texts are searched for, too.
        fixture.module.audit("Remote tunnel opened 0, File transfer started 2");
        const auto audited = roundOf([&] { fixture.module.audit(kAuditMessage.c_str()); }, operations);
        const auto searched = roundOf(
            [&] {
                fixture.module.log(ZP_LEVEL_INFO, kAuditMessage.c_str());
                for (const std::string& text : texts) {
                    benchmark::DoNotOptimize(std::strstr(kAuditMessage.c_str(), text.c_str()));
                }
            },
            operations);
        report(
            state, [&] { return compare(audited, searched, kRounds); }, bar);
    }
}

std::atomic<std::uint64_t> allocations{0};

std::uint64_t allocationsOfEntries(const Fixture& fixture) {
    const std::string message(1024, 'm');
    // First the C library's one-time work: time zone, buffer of standard output.
    fixture.module.log(ZP_LEVEL_INFO, message.c_str());
    const std::uint64_t before = allocations.load();
    for (int i = 0; i < kEntries; ++i) {
        fixture.module.log(ZP_LEVEL_INFO, message.c_str());
        fixture.module.audit(message.c_str());
    }
    return allocations.load() - before;
}

/// Runs rejected messages in a process that any system call but its exit would end.
bool rejectedWithoutSystemCall(const Fixture& fixture) {
    const pid_t child = ::fork();
    if (child == 0) {
        // A stream of its own, with room for all that is echoed.
        if (std::freopen("/dev/null", "w", stdout) == nullptr) {
            ::_exit(1);
        }
        static char buffer[kEntries * 256];
        std::setvbuf(stdout, buffer, _IOFBF, sizeof buffer);
        sock_filter exitOnly[] = {BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
                                  BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_exit, 0, 1),
                                  BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
                                  BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_KILL_PROCESS)};
        sock_fprog program = {4, exitOnly};
        ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
        if (::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0) {
            for (int i = 0; i < kEntries; ++i) {
                fixture.module.log(ZP_LEVEL_TRACE, kMessage.c_str());
            }
            ::syscall(SYS_exit, 0);
        }
        ::_exit(1);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

std::string settings() {
    const Fixture fixture;
    std::ostringstream text;
    text << "Entries of " << kMessage.size() << " bytes (audit: " << kAuditMessage.size() << "), " << kRounds
         << " rounds of " << kEntries << " a thread in turn (" << kCheapOperations
         << " where nothing is written); files in " << std::filesystem::relative(BENCH_SCRATCH).string()
         << "\nHeap blocks taken by " << 2 * kEntries
         << " entries of 1 KiB: " << allocationsOfEntries(fixture) << "\nSystem calls made by " << kEntries
         << " rejected messages: " << (rejectedWithoutSystemCall(fixture) ? "none" : "SOME") << '\n';
    return text.str();
}

void define() {
    const auto add = [](const std::string& name, auto function) {
        benchmark::RegisterBenchmark(name.c_str(), function)->Iterations(1)->UseManualTime();
    };
    const auto addEntry = [&](const char* name, int threads, auto against, Bar bar,
                              Time time = Time::OfTheClock) {
        add(name, [=](benchmark::State& state) { entry(state, threads, against, bar, time); });
    };
    const auto floor = [](Fixture& with) { with.floor.entry(); };
    const auto lookingFloor = [](Fixture& with) { with.floor.lookingEntry(); };
    const auto lockedFloor = [](Fixture& with) { with.floor.lockedEntry(); };
    const auto spdlog = [](Fixture& with) { with.spdlog.entry(); };
    const auto spdlogWithCheck = [](Fixture& with) { with.spdlog.checkedEntry(); };
    addEntry("entry / floor", 1, floor, 0.95);
    addEntry("entry / one look, one write, echo", 1, lookingFloor, 1.60);
    addEntry("entry / spdlog", 1, spdlog, std::nullopt);
    addEntry("entry / spdlog + size check", 1, spdlogWithCheck, std::nullopt);
    addEntry("2 threads: entry / floor under a mutex", 2, lockedFloor, 1.00);
    addEntry("2 threads, processor time: the same", 2, lockedFloor, 1.00, Time::OfTheProcessors);
    addEntry("2 threads: entry / floor", 2, floor, std::nullopt);
    addEntry("2 threads: entry / spdlog", 2, spdlog, std::nullopt);
    addEntry("2 threads: entry / spdlog + size check", 2, spdlogWithCheck, std::nullopt);
    add("rejected message / its echo", rejected);
    add("message of 1 MB / its echo", large);
    for (const auto& [texts, bar] :
         {std::pair(3, 1.40), {20, 1.25}, {100, 0.90}, {1000, 0.25}, {10'000, 0.05}}) {
        add("audit message / log + strstr, " + std::to_string(texts) + " texts",
            [texts, bar](benchmark::State& state) { audit(state, texts, bar); });
    }
}

}  // namespace

// The program's own malloc family stands before the C library's in the order of look-up, for the module too.
extern "C" {

void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);

__attribute__((visibility("default"))) void* malloc(std::size_t size) {
    ++allocations;
    return __libc_malloc(size);
}

__attribute__((visibility("default"))) void* calloc(std::size_t count, std::size_t size) {
    ++allocations;
    return __libc_calloc(count, size);
}

__attribute__((visibility("default"))) void* realloc(void* block, std::size_t size) {
    ++allocations;
    return __libc_realloc(block, size);
}
}

int main(int argumentCount, char** arguments) {
    define();
    return bench::run(argumentCount, arguments, settings);
}
