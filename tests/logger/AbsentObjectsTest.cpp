// What the module says when an object that it needs is not there.
#include "controller/ForcePollingTask.h"
#include "detection/RemoteDetection.h"
#include "detection/TunnelListner.h"
#include "lib/AgentHost.h"
#include "logging/FileLogger.h"
#include "logging/LogManager.h"
#include "logging/LogRevision.h"
#include "logging/MessageHandler.h"
#include "logging/RDMessageHandler.h"
#include "platform/Directory.h"
#include "support/Lines.h"
#include "support/Rows.h"

#include <cerrno>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

struct AbsentRow {
    support::RowName name;
    void (*use)();
    const char* lines;
};

const support::Rows<AbsentRow> absentRows(
    "AbsentObjects",
    {
        {"file logger without a handler",
         [] {
             FileLogger logger(nullptr);
             logger.updateLog(30, nullptr);
             logger.UpdateAuditLog(nullptr);
             platform::Mutex delivery;
             const MessageHandler other(delivery);
             logger.updateLog(30, &other);
         },
         "250 Received NULL MessageHandler pointer in FileLogger constructor|"
         "250 Received NULL MessageHandler pointer in FileLogger updateLog|"
         "250 Received NULL MessageHandler pointer in FileLogger UpdateAuditLog.|"},
        {"message handler without a message",
         [] {
             platform::Mutex delivery;
             MessageHandler handler(delivery);
             handler.log(30, nullptr);
             handler.audit(nullptr);
         },
         "50 \n MessageHandler received NULL message to log.|"
         "50 \n MessageHandler received NULL message for AuditLog.|"},
        {"remote detection without a handler", [] { RemoteDetection(nullptr).updateStatus(nullptr); },
         "250 Received NULL RDMessageHandler pointer in RemoteDetection constructor|"},
        {"remote detection without a controller",
         [] {
             platform::Mutex delivery;
             RDMessageHandler handler(delivery);
             const RemoteDetection detection(&handler);
             handler.setFileActive(true);
         },
         "250 Received NULL ZephanRSMSingleTon pointer in RemoteDetection's UpdateRemoteActivity|"},
        {"tunnel listener without a handler", [] { TunnelListner(nullptr).updateStatus(nullptr); },
         "250 Received NULL RDMessageHandler pointer in TunnelListner's constructor.|"},
        {"tunnel listener without a configuration",
         [] {
             platform::Mutex delivery;
             RDMessageHandler handler(delivery);
             const TunnelListner listener(&handler);
             handler.setFileActive(true);
         },
         "250 Received NULL XMLConfigData pointer in TunnelListner's ExecuteModalityScript.|"},
        {"log manager without a configuration", [] { LogManager().initialize(); },
         "250 \n Failed to get pointer for XMLConfigData, Not able to attach listners.|"},
    },
    [](const AbsentRow& row) {
        support::Lines lines;
        const agent::AgentHost host({&lines, nullptr, nullptr});
        row.use();
        EXPECT_EQ(lines.all, row.lines);
    });

TEST(AbsentObjects, ControllerOfThePollingThread) {
    support::Lines lines;
    agent::AgentHost host({&lines, nullptr, nullptr});
    EXPECT_EQ(ForcePollingTask::DataPollingTask(host.serviceAgent()), 1);
    EXPECT_EQ(lines.all,
              "50 Failed to get RSMSingleton pointer in convertDelayedToNormal(mode). Returning... \n|");
}

TEST(AbsentObjects, LogDirectory) {
    support::Lines lines;
    const agent::AgentHost host({&lines, nullptr, nullptr});
    platform::Directory directory;
    std::vector<std::string> names;
    EXPECT_EQ(LogRevision::listDirectory("nowhere", directory, names), ENOENT);
    EXPECT_EQ(lines.all, "250 \n \"Error(\" 2 \") opening \" nowhere \n|");
    EXPECT_TRUE(names.empty());
}

}  // namespace
