// Processes of their own for what a test's process should not suffer.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace support {

/// Starts the body in a process of its own, which ends by itself; one that hangs is ended by its alarm.
inline pid_t startChild(const std::function<void()>& body) {
    std::fflush(nullptr);
    const pid_t child = ::fork();
    if (child == 0) {
        ::alarm(30);
        body();
        std::fflush(nullptr);
        ::_exit(testing::Test::HasFailure() ? 1 : 0);
    }
    return child;
}

inline void expectGoodEnd(pid_t child) {
    int status = -1;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status)) << "signal " << WTERMSIG(status);
    EXPECT_EQ(WEXITSTATUS(status), 0);
}

inline void inChild(const std::function<void()>& body) {
    expectGoodEnd(startChild(body));
}

/// From now on these system calls of the process end with these errors; for the others there is `rest`,
/// except for the end of a thread.
struct Refusal {
    int call;
    int error;
};
inline void refuse(std::vector<Refusal> refusals, unsigned int rest = SECCOMP_RET_ALLOW) {
    std::vector<sock_filter> filter{BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr))};
    const auto answer = [&](int call, unsigned int result) {
        filter.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<unsigned int>(call), 0, 1));
        filter.push_back(BPF_STMT(BPF_RET | BPF_K, result));
    };
    for (const Refusal& one : refusals) {
        answer(one.call, SECCOMP_RET_ERRNO | static_cast<unsigned int>(one.error));
    }
    answer(SYS_exit, SECCOMP_RET_ALLOW);
    filter.push_back(BPF_STMT(BPF_RET | BPF_K, rest));
    const sock_fprog program{static_cast<unsigned short>(filter.size()), filter.data()};
    ASSERT_EQ(::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0), 0);
    ASSERT_EQ(::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program), 0);
}

/// How many threads have vanished.
inline std::atomic<int> vanished{0};

/// The calling thread ends where it is: nothing is unwound, no lock given back.
inline void vanish() {
    ++vanished;
    ::syscall(SYS_exit, 0);
}

/// Runs the body in a thread that vanishes in it, while or after `meanwhile` is done here.
inline void inVanishingThread(
    const std::function<void()>& body,
    const std::function<void(std::thread&)>& meanwhile = [](std::thread&) {}) {
    std::atomic<pid_t> id{0};
    std::thread thread([&] {
        id = ::gettid();
        body();
    });
    meanwhile(thread);
    while (vanished == 0 || std::filesystem::exists("/proc/self/task/" + std::to_string(id))) {
        ::usleep(1000);
    }
    thread.detach();
}

}  // namespace support
