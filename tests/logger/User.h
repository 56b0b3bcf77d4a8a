// A user whom permissions and limits bind, as tests run by the superuser need one.
#pragma once

#include "logger/LoggingHost.h"
#include "support/Child.h"

#include <algorithm>
#include <functional>

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

namespace logs {

/// Runs the body in a process that is not the superuser's, with a host whose files are that user's.
inline void asAUser(const LoggingHost& host, const std::function<void()>& body) {
    module();
    support::inChild([&] {
        if (::geteuid() == 0) {
            constexpr id_t nobody = 65534;
            for (const char* const place : {"", "log", "state"}) {
                ASSERT_EQ(::chown(host.workspace.path(place).c_str(), nobody, nobody), 0);
            }
            ASSERT_TRUE(::setresgid(nobody, nobody, nobody) == 0 && ::setresuid(nobody, nobody, nobody) == 0);
        }
        body();
    });
}

/// 3 leaves none for anything new.
inline void setMostDescriptors(rlim_t most) {
    rlimit limit{};
    ::getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = std::min(most, limit.rlim_max);
    EXPECT_EQ(::setrlimit(RLIMIT_NOFILE, &limit), 0);
}

}  // namespace logs
