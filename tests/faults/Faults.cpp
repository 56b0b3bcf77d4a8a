#include "Faults.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <unwind.h>

#include <dlfcn.h>
#include <fcntl.h>
#include <link.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace faults {
namespace {

struct Plan {
    std::size_t kind = kKinds.size();
    long first = 0;
    long count = 0;
    int error = kNone;
};

std::array<Plan, 4> plans{};
std::array<std::atomic<long>, kKinds.size()> calls{};
std::atomic<long> made{0};
long planned = 0;  // faults in all; 0 to count only
bool memoryPlanned = false;
const char* reportPath = nullptr;
int journal = -1;
std::atomic<bool> ready{false};
thread_local bool looking __attribute__((tls_model("initial-exec"))) = false;
thread_local bool moduleCalled __attribute__((tls_model("initial-exec"))) = false;

/// Who stands where on the stack, seen from the innermost frame.
struct Stack {
    bool anyDepth;
    int hostFrames = 0;
    bool parser = false;
    bool agent = false;
    bool module = false;
};

bool isParser(const char* library) noexcept {
    return std::strstr(library, "/libexpat") != nullptr;
}

_Unwind_Reason_Code visit(_Unwind_Context* context, void* data) {
    auto& stack = *static_cast<Stack*>(data);
    dl_find_object object{};
    void* const address = reinterpret_cast<void*>(_Unwind_GetIP(context) - 1);
    if (_dl_find_object(address, &object) != 0) {
        return _URC_END_OF_STACK;
    }
    const char* const name = object.dlfo_link_map->l_name;
    if (std::strstr(name, "/libkrx-faults.so") != nullptr) {
        return _URC_NO_REASON;
    }
    if (std::strstr(name, "/libZephanRSMLogger.so") != nullptr) {
        stack.module = true;
        return stack.anyDepth ? _URC_NO_REASON : _URC_END_OF_STACK;
    }
    if (stack.module) {
        // What the parser reports gets memory through the module, too.
        stack.parser |= isParser(name);
        return _URC_END_OF_STACK;
    }
    if (!stack.anyDepth) {
        // The simulator has functions of its own before this library's; they call on for the module.
        return *name == '\0' && stack.hostFrames++ == 0 ? _URC_NO_REASON : _URC_END_OF_STACK;
    }
    stack.parser |= isParser(name);
    stack.agent |= std::strstr(name, "/libkrx-agent.so") != nullptr;
    return *name == '\0' ? _URC_END_OF_STACK : _URC_NO_REASON;
}

Stack look(bool anyDepth) noexcept {
    Stack stack{.anyDepth = anyDepth};
    if (ready && !looking) {
        looking = true;
        const int error = errno;
        _Unwind_Backtrace(&visit, &stack);
        errno = error;
        looking = false;
    }
    moduleCalled = stack.module;
    return stack;
}

int count(std::size_t kind) noexcept {
    const long call = ++calls[kind];
    for (const Plan& plan : plans) {
        if (plan.kind == kind && call >= plan.first && call < plan.first + plan.count) {
            ++made;
            return plan.error;
        }
    }
    return kNone;
}

void readPlans(char* text) {
    char* rest = nullptr;
    std::size_t next = 0;
    for (char* word = strtok_r(text, ",", &rest); word != nullptr && next < plans.size();
         word = strtok_r(nullptr, ",", &rest)) {
        std::array<char, 32> kind{};
        std::array<char, 16> error{};
        Plan plan;
        if (std::sscanf(word, "%31[^:]:%ld:%ld:%15s", kind.data(), &plan.first, &plan.count, error.data()) !=
            4) {
            continue;
        }
        for (std::size_t i = 0; i < kKinds.size(); ++i) {
            plan.kind = std::strcmp(kKinds[i], kind.data()) == 0 ? i : plan.kind;
        }
        plan.error = std::strcmp(error.data(), "short") == 0 ? kShort : std::atoi(error.data());
        planned += plan.count;
        memoryPlanned |= plan.kind <= numberOf("agent-memory");
        plans[next++] = plan;
    }
}

__attribute__((constructor)) void begin() {
    if (const char* const text = std::getenv("KRX_FAULTS")) {
        std::array<char, 256> copy{};
        std::strncpy(copy.data(), text, copy.size() - 1);
        readPlans(copy.data());
    }
    reportPath = std::getenv("KRX_FAULTS_REPORT");
    if (const char* const path = std::getenv("KRX_FAULTS_JOURNAL")) {
        journal = static_cast<int>(
            ::syscall(SYS_openat, AT_FDCWD, path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666));
    }
    ready = reportPath != nullptr;
}

__attribute__((destructor)) void report() {
    if (!ready.exchange(false)) {
        return;
    }
    if (std::FILE* const file = std::fopen(reportPath, "w")) {
        std::fprintf(file, "made %ld\n", made.load());
        for (std::size_t i = 0; i < kKinds.size(); ++i) {
            std::fprintf(file, "%s %ld\n", kKinds[i], calls[i].load());
        }
        std::fclose(file);
    }
}

}  // namespace

int faultOf(std::size_t kind) noexcept {
    return look(false).module ? count(kind) : kNone;
}

bool memoryFails() noexcept {
    // Long stacks take their time, so they are looked at only while it matters.
    if (planned > 0 && (!memoryPlanned || made >= planned)) {
        return false;
    }
    const Stack stack = look(true);
    if (!stack.module) {
        return false;
    }
    return count(stack.parser  ? numberOf("parser-memory")
                 : stack.agent ? numberOf("agent-memory")
                               : numberOf("memory")) != kNone;
}

bool isModules() noexcept {
    return moduleCalled;
}

void note(char what, std::string_view text) noexcept {
    if (journal < 0) {
        return;
    }
    std::array<char, 32> head{};
    const int length = std::snprintf(head.data(), head.size(), "%c %zu\n", what, text.size());
    ::syscall(SYS_write, journal, head.data(), static_cast<std::size_t>(length));
    ::syscall(SYS_write, journal, text.data(), text.size());
}

void* nextNamed(const char* name) noexcept {
    return ::dlsym(RTLD_NEXT, name);
}

}  // namespace faults
