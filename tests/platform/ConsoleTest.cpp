// Standard output whose reader is gone, slow or away for ever, and threads that share it.
#include "platform/Console.h"
#include "platform/portable/Command.h"
#include "platform/portable/EchoWithoutWait.h"
#include "support/Child.h"
#include "support/Rows.h"
#include "support/Workspace.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

constexpr int kPipeSize = 4096;

/// A pipe in the place of this process's standard output; its reader, which is the test.
int redirectToPipe() {
    std::array<int, 2> ends{};
    EXPECT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
    ::fcntl(ends[1], F_SETPIPE_SZ, kPipeSize);
    ::dup2(ends[1], STDOUT_FILENO);
    ::close(ends[1]);
    return ends[0];
}

std::string readAll(int reader) {
    std::string text;
    std::array<char, 512> buffer{};
    for (ssize_t size = 1; size > 0;) {
        size = ::read(reader, buffer.data(), buffer.size());
        text.append(buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
    }
    return text;
}

/// Waits until whoever writes to the pipe waits for its reader.
void awaitFullPipe(int reader) {
    for (int size = 0; size < kPipeSize;) {
        ::ioctl(reader, FIONREAD, &size);
        ::usleep(1000);
    }
}

struct BufferingRow {
    support::RowName name;
    int buffering;
};

const support::Rows<BufferingRow> bufferingRows(
    "Console/ReaderThatIsGoneEndsNobodyAndLeavesNoSignal",
    {{"full buffers", _IOFBF}, {"lines", _IOLBF}, {"no buffer", _IONBF}}, [](const BufferingRow& row) {
        support::inChild([&row] {
            ::close(redirectToPipe());
            std::setvbuf(stdout, nullptr, row.buffering, BUFSIZ);
            const auto echoes = [] {
                for (int i = 0; i < 100; ++i) {
                    platform::echo(std::string(200, 'e').append("\n").c_str());
                }
                platform::flushEcho();
            };
            const auto isPending = [] {
                sigset_t pending{};
                ::sigpending(&pending);
                return sigismember(&pending, SIGPIPE) == 1;
            };
            echoes();  // with the signal's default: the end of the process
            static int signals = 0;
            std::signal(SIGPIPE, [](int) { ++signals; });
            echoes();
            EXPECT_EQ(signals, 0);
            EXPECT_EQ(::write(STDOUT_FILENO, "-", 1), -1);
            EXPECT_EQ(signals, 1) << "the host's own write";
            sigset_t pipe{};
            sigaddset(&pipe, SIGPIPE);
            ::sigprocmask(SIG_BLOCK, &pipe, nullptr);
            echoes();
            EXPECT_FALSE(isPending());
            std::raise(SIGPIPE);
            echoes();
            EXPECT_TRUE(isPending()) << "the host's own signal";
            std::signal(SIGPIPE, SIG_IGN);
        });
    });

// A host's timer, say, whose signals cut the calls of the system short.
TEST(Console, SignalsTearNothing) {
    support::inChild([] {
        const int reader = redirectToPipe();
        static std::atomic<int> signals = 0;
        struct sigaction action {};
        action.sa_handler = [](int) { ++signals; };
        ::sigaction(SIGUSR1, &action, nullptr);
        const std::string line = std::string(4 * kPipeSize, 'a') + '\n';
        std::thread waiting([&] { platform::echo(line.c_str()); });
        awaitFullPipe(reader);
        for (int i = 1; i <= 3; ++i) {
            ::pthread_kill(waiting.native_handle(), SIGUSR1);
            for (int tries = 0; tries < 1000 && signals < i; ++tries) {
                ::usleep(1000);
            }
        }
        EXPECT_EQ(signals, 3) << "while the reader is waited for";
        std::string text;
        std::thread reading([&] { text = readAll(reader); });
        waiting.join();
        platform::echo("b");
        std::fflush(stdout);
        EXPECT_EQ(std::ferror(stdout), 0);
        ::close(STDOUT_FILENO);
        reading.join();
        EXPECT_TRUE(text == line + 'b') << text.size() << " bytes";
    });
}

TEST(Console, ReaderThatDoesNotReadHoldsUpOneThread) {
    support::inChild([] {
        const int reader = redirectToPipe();
        std::thread waiting([] { platform::echo(std::string(2 * kPipeSize, 'a').c_str()); });
        awaitFullPipe(reader);
        const std::size_t mebibyte = 1U << 20U;
        const std::string kibibyte(1024, 'k');
        platform::echo("one ");
        platform::echo(std::string(mebibyte, 'm').c_str());  // more than what is left
        for (int i = 0; i < 2000; ++i) {
            platform::echo(kibibyte.c_str());
        }
        platform::echo("two ");
        platform::flushEcho();
        std::string text;
        std::thread reading([&] { text = readAll(reader); });
        waiting.join();
        platform::echo("three");
        std::fflush(stdout);
        ::close(STDOUT_FILENO);
        reading.join();
        std::string wanted(2 * kPipeSize, 'a');
        wanted += "one ";
        for (std::size_t i = 0; i < mebibyte / 1024 - 1; ++i) {
            wanted += kibibyte;
        }
        EXPECT_TRUE(text == wanted + "two three") << text.size() << " bytes";
    });
}

const support::Rows<BufferingRow> withoutWaitRows(
    "Console/ThreadThatMayNotWaitWritesWhatFits", {{"full buffers", _IOFBF}, {"no buffer", _IONBF}},
    [](const BufferingRow& row) {
        support::inChild([&row] {
            constexpr int kRoom = 65536;
            const int reader = redirectToPipe();
            ::fcntl(reader, F_SETPIPE_SZ, kRoom);
            ::fcntl(reader, F_SETFL, O_NONBLOCK);
            std::setvbuf(stdout, nullptr, row.buffering, BUFSIZ);
            const auto isRead = [reader] {
                platform::flushEcho();
                return readAll(reader);
            };
            const std::string half(kRoom / 2, 'h');
            {
                const platform::EchoWithoutWait noWait(platform::EchoWithoutWait::Kind::Stop);
                platform::echo("at once ");
                EXPECT_EQ(isRead(), "at once ");
                platform::echo(half.c_str());
                platform::echo(half.c_str());
                platform::echo("in order ");
                EXPECT_EQ(isRead(), half);
            }
            platform::echo("then");
            EXPECT_EQ(isRead(), half + "in order then");
        });
    });

#if !defined(__SANITIZE_THREAD__)  // keeps the signal back until the write is over
TEST(Console, ThreadThatVanishesInAWriteHoldsUpNobody) {
    support::inChild([] {
        const int reader = redirectToPipe();
        std::signal(SIGUSR1, [](int) { support::vanish(); });
        support::inVanishingThread([] { platform::echo(std::string(2 * kPipeSize, 'a').c_str()); },
                                   [&](std::thread& writing) {
                                       awaitFullPipe(reader);
                                       ::pthread_kill(writing.native_handle(), SIGUSR1);
                                   });
        for (int i = 0; i < 3; ++i) {
            platform::echo("b");
            platform::flushEcho();
        }
        ::_exit(0);  // without the C library, which would wait for the stream
    });
}
#endif

TEST(Console, ManyThreadsLoseNothing) {
    constexpr int kThreads = 8;
    constexpr int kLines = 400;
    support::inChild([] {
        const int reader = redirectToPipe();
        std::string text;
        std::thread reading([&] { text = readAll(reader); });
        std::vector<std::thread> threads;
        for (int thread = 0; thread < kThreads; ++thread) {
            threads.emplace_back([thread] {
                for (int i = 0; i < kLines; ++i) {
                    const std::string line = std::to_string(thread) + " " + std::to_string(i) + "\n";
                    platform::echo(line.c_str());
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        std::fflush(stdout);
        ::close(STDOUT_FILENO);
        reading.join();
        std::array<int, kThreads> next{};
        std::istringstream lines(text);
        std::size_t thread = 0;
        for (int number = 0; lines >> thread >> number;) {
            ASSERT_EQ(number, next.at(thread)++);
        }
        EXPECT_TRUE(lines.eof());
        EXPECT_EQ(next, (std::array{kLines, kLines, kLines, kLines, kLines, kLines, kLines, kLines}));
    });
}

TEST(Console, NoneOfTwoStopsWaitsForAReader) {
    using platform::EchoWithoutWait;
    const EchoWithoutWait first(EchoWithoutWait::Kind::Stop);
    std::thread([] {
        const EchoWithoutWait second(EchoWithoutWait::Kind::Stop);
        EXPECT_TRUE(EchoWithoutWait::isActive());
    }).join();
    EXPECT_TRUE(EchoWithoutWait::isActive());
}

TEST(Console, KeepsTheOrderWithTheHostsAndTheCommandsOutput) {
    const support::Workspace workspace;
    support::inChild([&] {
        ASSERT_NE(std::freopen(workspace.path("output").c_str(), "w", stdout), nullptr);
        std::printf("1");
        platform::echo("2");
        std::printf("3");
        EXPECT_EQ(platform::runCommand("printf 4"), 0);
        platform::echo("5");
        std::printf("6");
    });
    EXPECT_EQ(workspace.read("output"), "123456");
}

#if !defined(__SANITIZE_THREAD__) && !defined(__SANITIZE_ADDRESS__)
TEST(Console, TextThatFitsTheStreamMakesNoSystemCall) {
    support::inChild([] {
        ASSERT_NE(std::freopen("/dev/null", "w", stdout), nullptr);
        static std::array<char, 100000> buffer;
        std::setvbuf(stdout, buffer.data(), _IOFBF, buffer.size());
        platform::echo("first");
        support::refuse({}, SECCOMP_RET_KILL_PROCESS);
        for (int i = 0; i < 500; ++i) {
            platform::echo("one of five hundred");
        }
        support::vanish();
    });
}
#endif

}  // namespace
