// Threads of the host that are terminated in the module: their mutexes are left without an owner, and the
// module goes on.
#include "lib/AgentHost.h"
#include "lib/Module.h"
#include "lib/Observer.h"
#include "platform/agent/Threads.h"
#include "sim/host/ServiceCall.h"
#include "sim/trace/StdoutCapture.h"
#include "sim/windows/ModuleCalls.h"
#include "support/Workspace.h"

#include <atomic>
#include <cstdio>
#include <functional>
#include <mutex>
#include <string>

#include <gtest/gtest.h>

namespace {

constexpr std::uint8_t kError = 50;
constexpr DWORD kPatience = 10'000;  // milliseconds

/// Where a thread stops for ever, once armed.
class Trap final {
  public:
    void arm() { armed_ = true; }
    void pass() {
        if (armed_.exchange(false)) {
            ::SetEvent(reached_);
            ::Sleep(INFINITE);
        }
    }
    /// Terminates the thread that does `body` in the trap.
    void terminateIn(std::function<void()> body) {
        arm();
        const HANDLE thread = ::CreateThread(nullptr, 0, run, &body, 0, nullptr);
        EXPECT_EQ(::WaitForSingleObject(reached_, kPatience), WAIT_OBJECT_0) << "not reached";
        ::TerminateThread(thread, 0);
        EXPECT_EQ(::WaitForSingleObject(thread, kPatience), WAIT_OBJECT_0);
        ::CloseHandle(thread);
    }

  private:
    static DWORD WINAPI run(void* body) {
        (*static_cast<std::function<void()>*>(body))();
        return 0;
    }

    std::atomic<bool> armed_{false};
    HANDLE reached_ = ::CreateEventA(nullptr, FALSE, FALSE, nullptr);
};

Trap writing;
Trap echoing;
Trap asking;

BOOL WINAPI writeFile(HANDLE file, LPCVOID data, DWORD size, LPDWORD written, LPOVERLAPPED position) {
    writing.pass();
    return ::WriteFile(file, data, size, written, position);
}

std::size_t writeStream(const void* data, std::size_t size, std::size_t count, std::FILE* stream) {
    echoing.pass();
    return std::fwrite(data, size, count, stream);
}

int isThreadActive(KRXThread* thread) {
    asking.pass();
    return KRXThreadIsActive(thread);
}

/// An enterprise on whose answer a thread can wait for ever.
struct Enterprise final : agent::Enterprise {
    std::int8_t receive(const std::string& /*member*/, const agent::NamedValues& /*properties*/) override {
        answering.pass();
        return 0;
    }
    Trap answering;
};

struct Lines final : agent::Observer {
    void onLog(int level, std::string_view text) override {
        const std::lock_guard lock(mutex);
        all += std::to_string(level) + " " + std::string(text) + "|";
    }
    bool has(const std::string& line) {
        const std::lock_guard lock(mutex);
        return all.find(line + "|") != std::string::npos;
    }
    void forget() {
        const std::lock_guard lock(mutex);
        all.clear();
    }
    std::mutex mutex;
    std::string all;
};

class Abandonment : public testing::Test {
  protected:
    Abandonment() {
        std::filesystem::current_path(workspace_.path(""));
        workspace_.write(
            "config.xml",
            "<z><FileLogging><LogFilePath>log/k.xml</LogFilePath><LogLevel>error</LogLevel></FileLogging>"
            "<ListnerSet><FileListner>1</FileListner></ListnerSet></z>");
        sim::redirect(::GetModuleHandleA(ZEPHAN_MODULE), "WriteFile", reinterpret_cast<void*>(writeFile));
        sim::redirect(::GetModuleHandleA(ZEPHAN_MODULE), "fwrite", reinterpret_cast<void*>(writeStream));
    }
    ~Abandonment() override {
        EXPECT_EQ(module_.ZPXRSMLoggerShutdown(), 0);
        std::filesystem::current_path(before_);
    }
    void log(const char* message) { EXPECT_EQ(module_.ZPXRSMLoggerLog(kError, message), 0); }
    bool isLogged(const std::string& message) {
        return workspace_.read("log/k.xml").find(":: " + message) != std::string::npos;
    }

    const std::filesystem::path before_ = std::filesystem::current_path();
    const support::Workspace workspace_;
    Lines lines_;
    Enterprise enterprise_;
    agent::AgentHost host_{{&lines_, &enterprise_, nullptr}};
    agent::Module module_{ZEPHAN_MODULE};
    sim::StdoutCapture capture_;
};

TEST_F(Abandonment, InAWriteThatEntryAndTheNextAreLost) {
    ASSERT_EQ(module_.ZPXRSMLoggerStatup("config.xml"), 0);
    log("first");
    writing.terminateIn([this] { log("terminated"); });
    capture_.take();
    log("second");
    EXPECT_EQ(capture_.take(), "\n The thread got ownership of an abandoned logging mutex.second");
    log("third");
    EXPECT_EQ(capture_.take(), "third");
    for (const auto& [message, expected] :
         {std::pair{"first", true}, {"terminated", false}, {"second", false}, {"third", true}}) {
        EXPECT_EQ(isLogged(message), expected) << message;
    }
}

TEST_F(Abandonment, InAnEchoTheOthersGoAroundTheStream) {
    ASSERT_EQ(module_.ZPXRSMLoggerStatup("config.xml"), 0);
    echoing.terminateIn([this] { log("terminated"); });
    capture_.take();
    log("second");
    EXPECT_EQ(capture_.take(), "second");
    EXPECT_TRUE(isLogged("terminated"));
    EXPECT_TRUE(isLogged("second"));
}

class AbandonmentInRsm : public Abandonment {
  protected:
    void SetUp() override {
        sim::redirect(::GetModuleHandleA(ZEPHAN_MODULE), "KRXThreadIsActive",
                      reinterpret_cast<void*>(isThreadActive));
        ASSERT_EQ(module_.ZPRSMExtnStartup(&handle_, host_.serviceAgent(), "config.xml"), 0);
        ASSERT_EQ(module_.ZPXRSMWSCreateService(handle_, &service_), 0);
        ASSERT_EQ(connect(), 0);
        awaitReport();
    }
    void TearDown() override { EXPECT_EQ(module_.ZPXRSMWSDestroyService(handle_, service_), 0); }
    int connect() {
        return sim::callService(*service_, "connect", {{"pollDuration", "10"}, {"pollingRate", "30"}}).result;
    }
    void awaitReport() {
        while (!lines_.has("40 \n Properties Updated Succesfully.....\n")) {
            ::Sleep(1);
        }
    }
    void* handle_ = nullptr;
    ZPService* service_ = nullptr;
};

TEST_F(AbandonmentInRsm, InAStartTheNextFailsAndTheOneBehindDoesNot) {
    asking.terminateIn([this] { connect(); });
    const std::string abandoned = "50 \n The thread got ownership of an abandoned logging mutex.";
    EXPECT_FALSE(lines_.has(abandoned));
    EXPECT_EQ(connect(), -1);
    EXPECT_TRUE(lines_.has(abandoned));
    EXPECT_EQ(connect(), 0);
}

TEST_F(AbandonmentInRsm, InAReportTheNextIsStillTold) {
    enterprise_.answering.terminateIn([this] { connect(); });
    lines_.forget();
    EXPECT_EQ(connect(), 0);
    awaitReport();
}

}  // namespace
