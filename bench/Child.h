// Processes of the benchmark's own, and what the module takes in one.
#pragma once

#include <functional>
#include <type_traits>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace bench {

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

}  // namespace bench
