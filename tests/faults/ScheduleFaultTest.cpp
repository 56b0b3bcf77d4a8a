// The schedule file while calls into the system fail: what was ordered is not lost, and what is lost is told.
#include "rsm/Rows.h"

#include <cstdlib>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

namespace {

class ScheduleFault : public testing::Test {
  protected:
    ScheduleFault() {
        ::setenv("ASAN_OPTIONS", "verify_asan_link_order=0", 1);
        std::filesystem::create_symlink(FAULTS, library_.path("libkrx-faults.so"));
    }
    ~ScheduleFault() override { ::unsetenv("LD_PRELOAD"); }

    /// Replays follow with this plan of `libkrx-faults.so`.
    void plan(const std::string& text) {
        ::setenv("LD_PRELOAD", library_.path("libkrx-faults.so").c_str(), 1);
        ::setenv("KRX_FAULTS", text.c_str(), 1);
        ::setenv("KRX_FAULTS_REPORT", "faults.report", 1);
    }

  private:
    support::Workspace library_;  ///< with a link to it: a blank in LD_PRELOAD ends a name
};

const std::string kRecord = "ordered 11:00:00 11:30:00 30 30";
const std::string kStopAndStart =
    "; 0 start data-source state/schedule.xml; 0 start rsm config.xml; 5 stop rsm; 6 show-order";

TEST_F(ScheduleFault, WhatCouldNotBeReadStays) {
    const std::string unable = R"( | "\n Unable to read the schedule in file = state/schedule.xml")";
    for (const char* const fault : {"lseek:1:1:5", "pread:1:1:5"}) {
        plan(fault);
        checkRow(std::string(fault) + " | 0 " + kRecord + kStopAndStart + " | | " + unable + " | " + kRecord);
        checkRow(
            std::string(fault) + ", later ordered | 0 " + kRecord +
            "; 0 start data-source state/schedule.xml; 0 start rsm config.xml; 1 command ScheduleRSM GracePeriod=1;"
            " 90 stop rsm; 91 show-order | 61 | 1 grace, 61 off" +
            unable + " | \"text\":null}");
    }
    // Each allocation up to the RSM extension's own.
    for (int allocation = 1; allocation <= 20; ++allocation) {
        const std::string fault = "memory:" + std::to_string(allocation) + ":1:12";
        plan(fault);
        const auto seen = replay(
            "0 write state/schedule.xml \"<RSMExecuteCommand><RSMStartDate>2026:03:01</RSMStartDate>"
            "<RSMStartTime>11:00:00</RSMStartTime><RSMEndDate>2026:03:01</RSMEndDate>"
            "<RSMEndTime>11:30:00</RSMEndTime><PollingRate>30</PollingRate><GracePeriod>30</GracePeriod>"
            "</RSMExecuteCommand>\"\n0 start data-source state/schedule.xml\n0 start rsm config.xml\n"
            "5 stop rsm\n6 show state/schedule.xml\n");
        EXPECT_NE(seen.bytes().find("\"text\":\"<RSMExecuteCommand>"), std::string::npos) << fault;
    }
}

// A session that is not resumed for want of memory is resumed by a later start.
TEST_F(ScheduleFault, ASessionThatCouldNotBeReadStays) {
    for (int allocation = 1; allocation <= 40; ++allocation) {
        const std::string fault = "memory:" + std::to_string(allocation) + ":1:12";
        plan(fault);
        const auto seen = replay(
            "0 write state/resume.xml \"<ResumeRSM><RSMStartDate>2026:03:01</RSMStartDate>"
            "<RSMStartTime>09:58:00</RSMStartTime><PollingRate>30</PollingRate><GracePeriod>10</GracePeriod>"
            "</ResumeRSM>\"\n0 start rsm config.xml\n0 show state/resume.xml\n");
        EXPECT_NE(seen.bytes().find("\"text\":\"<ResumeRSM>"), std::string::npos) << fault;
    }
}

/// The contents first, then the name of the new file.
TEST_F(ScheduleFault, OrdersAreOnTheDiskWithTheirFilesName) {
    plan("");
    const support::Workspace workspace;
    workspace.write("config.xml", kConfiguration);
    const support::Replay result(workspace, "0 start data-source new.xml\n1 command ScheduleRSM\n2 end\n",
                                 "UTC");
    EXPECT_NE(workspace.read("faults.report").find("\nfsync 2\n"), std::string::npos)
        << workspace.read("faults.report");
    const support::Replay session(
        workspace, "0 start rsm config.xml\n0 start web-service\n1 connect 1 30\n2 end\n", "UTC");
    EXPECT_NE(workspace.read("faults.report").find("\nfsync 2\n"), std::string::npos)
        << "a session: " << workspace.read("faults.report");
}

}  // namespace
