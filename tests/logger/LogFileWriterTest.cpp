// What the log file's writer tells, when, and with what held; threads that end in the middle of it.
#include "config/XMLConfigData.h"
#include "logger/Interposed.h"
#include "logger/Logs.h"
#include "logging/LogFileWriter.h"
#include "platform/agent/Logging.h"
#include "support/Child.h"

#include <functional>
#include <memory>
#include <string>
#include <thread>

#include <gtest/gtest.h>

namespace {

constexpr std::int64_t kSunday = 1772359200;
const std::string kReport = "\n Error renaming file";

std::function<void(const char*)> hook;

/// A writer to a file that reaches its limit with each entry and cannot be renamed: its name is too long for
/// an archive of it.
class LogFileWriterTest : public testing::Test {
  protected:
    LogFileWriterTest() {
        interposed::now = kSunday;
        workspace_.write("config", logs::configuration(logs::setting("LogFilePath", workspace_.path(kName)) +
                                                       logs::setting("FileSize", "1")));
        loadConfiguration(workspace_.path("config"));
        writer_ = LogFileWriter::getInstance();
        KRXLogSetFunc([](std::uint8_t, const char* text) -> std::int8_t {
            hook ? hook(text) : void();
            return 0;
        });
        writer_->writeInfo("a");
    }
    ~LogFileWriterTest() override {
        KRXLogSetFunc(nullptr);
        hook = nullptr, interposed::write = nullptr, interposed::now = 0;
        LogFileWriter::destroyInstance();
        XMLConfigData::destroyInstance();
    }
    /// As the file logger does it.
    void write(const char* text) const {
        writer_->writeInfo(text);
        LogFileWriter::report(writer_->takeNotices());
    }
    std::string written() const { return logs::withoutStamps(workspace_.read(kName)); }

    const std::string kName = "log/" + std::string(245, 'n') + ".xml";
    const support::Workspace workspace_;
    std::shared_ptr<LogFileWriter> writer_;
};

TEST_F(LogFileWriterTest, ReportComesBackAsAnEntryWithWhatTheAgentAdds) {
    int reports = 0;
    hook = [&](const char* text) {
        ++reports;
        // No lock is held here, for which another thread would wait.
        std::thread([&] { write("another's "); }).join();
        write((std::string("250:") + text).c_str());
        write("A line of the agent's own");
    };
    write("b");
    EXPECT_EQ(reports, 1);
    EXPECT_EQ(written(), "|a|b\n|another's \n|250:" + kReport + "|A line of the agent's own");
    ++interposed::now;
    write("c");
    EXPECT_EQ(reports, 2);
}

TEST_F(LogFileWriterTest, NullMessageIsTold) {
    writer_->writeInfo(nullptr);
    EXPECT_NE(written().find("|Received NULL message for Logging."), std::string::npos) << written();
}

// What is not the report itself is an entry like any other, whatever it says.
TEST_F(LogFileWriterTest, LineOfTheHostsThatReadsAsTheReportRotates) {
    int reports = 0;
    hook = [&](const char*) { ++reports; };
    write(kReport.c_str());
    EXPECT_EQ(reports, 1);
    EXPECT_EQ(written(), "|a|" + kReport + "\n");
}

TEST_F(LogFileWriterTest, EachNoticeIsHandedOutOnce) {
    for (const int seconds : {0, 0, 1, 0}) {
        interposed::now += seconds;
        writer_->writeInfo("b");
    }
    const Notices notices = writer_->takeNotices();
    EXPECT_EQ(notices.failedRenames, 2U) << "one a second";
    EXPECT_EQ(writer_->takeNotices().failedRenames, 0U);
    int reports = 0;
    hook = [&](const char* text) { reports += text == kReport ? 1 : 100; };
    Notices sum{1, 2, 3};
    sum += Notices{10, 20, 30};
    EXPECT_TRUE(sum.failedRenames == 11 && sum.abandonedWaits == 22 && sum.failedReleases == 33);
    LogFileWriter::report(Notices{});
    LogFileWriter::report(notices);
    EXPECT_EQ(reports, 2);
}

// Its thread has the id of the one that reports, and the role of that one is nobody's in a child.
TEST_F(LogFileWriterTest, ChildThatIsForkedInAReportRotatesLikeAnyOther) {
    int reports = 0;
    hook = [&](const char*) {
        if (++reports == 1) {
            support::inChild([&] {
                ++interposed::now;
                write("c");
                EXPECT_EQ(reports, 2);
                EXPECT_EQ(written(), "|a|b\n|c\n");
            });
        }
    };
    write("b");
    EXPECT_EQ(reports, 1);
}

TEST_F(LogFileWriterTest, ThreadThatVanishesWhileItReportsStopsNoRotation) {
    support::inChild([this] {
        hook = [](const char*) { support::vanish(); };
        support::inVanishingThread([this] { write("b"); });
        int reports = 0;
        hook = [&](const char*) { ++reports; };
        ++interposed::now;
        write("c");
        EXPECT_EQ(reports, 1);
    });
}

TEST_F(LogFileWriterTest, ThreadThatVanishesInAWriteLosesThatEntryAndTheNext) {
    support::inChild([this] {
        testing::internal::CaptureStdout();
        interposed::write = [](int, const void*, std::size_t) -> ssize_t {
            support::vanish();
            return 0;
        };
        support::inVanishingThread([this] { write("b"); });
        interposed::write = nullptr;
        write("c");
        write("d");
        EXPECT_EQ(testing::internal::GetCapturedStdout(),
                  "\n The thread got ownership of an abandoned logging mutex.");
        EXPECT_EQ(written(), "|a|d\n");
    });
}

}  // namespace
