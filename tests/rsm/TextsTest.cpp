// What only a caller of the classes themselves can see.
#include "ZephanRSMLogger.h"
#include "controller/ZephanRSMSingleTon.h"
#include "lib/AgentHost.h"
#include "lib/Observer.h"
#include "platform/agent/Messaging.h"
#include "platform/portable/Number.h"
#include "records/TaggedText.h"
#include "scheduling/ScheduleRSMHandler.h"
#include "support/Lines.h"
#include "support/Rows.h"
#include "support/Workspace.h"
#include "webservice/ConnectMessage.h"
#include "webservice/DisconnectMessage.h"
#include "webservice/ZephanServicesServiceImpl.h"

#include <atomic>
#include <chrono>
#include <ctime>
#include <future>
#include <limits>
#include <memory>

#include <gtest/gtest.h>

namespace {

using namespace KRX::Services::ZephanServicesNS;
using KRX::Messaging::Serializable;

/// What the library would write for a sub-element.
std::string textOf(Serializable& message, const char* name) {
    bool release = true;
    const char* const text = message.GetSubElementText(name, release, 0);
    const std::string copy = text == nullptr ? "none" : text;
    if (release) {
        delete[] text;
    }
    return copy;
}

TEST(Texts, NullBuffers) {
    support::Lines lines;
    const agent::AgentHost host({&lines, nullptr, nullptr});
    char text[40] = "untouched";
    ScheduleRSMHandler::dateToString(0, nullptr, text);
    ScheduleRSMHandler::dateToString(0, text, nullptr);
    ProfileReport::dateToString(0, nullptr);
    EXPECT_STREQ(text, "untouched");
    EXPECT_EQ(lines.all,
              "250 Received NULL pointer in dateToString of ScheduleRSMHandler.|"
              "250 Received NULL pointer in dateToString of ScheduleRSMHandler.|"
              "250 Received NULL pointer in dateToString of ZephanRSMSingleTon.|");
}

// An order that comes in while the agent takes a line of another one does not wait for that.
TEST(Schedule, NoLockIsHeldWhileTheAgentIsCalled) {
    struct SecondOrder final : agent::Observer {
        void onLog(int /*level*/, std::string_view text) override {
            if (text.find("GOING TO PUT") != std::string_view::npos && !seen.exchange(true)) {
                second = std::async(std::launch::async, [this] {
                    return handler->executeScheduleCommand(&input, nullptr, *controller);
                });
                finished = second.wait_for(std::chrono::seconds(10)) == std::future_status::ready;
            }
        }
        ScheduleRSMHandler* handler = nullptr;
        ZephanRSMSingleTon::Reference controller = ZephanRSMSingleTon::getInstance();
        PropList input{};
        std::atomic<bool> seen = false;
        std::future<std::int32_t> second;
        bool finished = false;
    } observer;
    const agent::AgentHost host({&observer, nullptr, nullptr});
    const support::Workspace workspace;
    ScheduleRSMHandler handler(workspace.path("schedule.xml").string().c_str());
    // A period that is over is stored, but nothing is started.
    std::string texts[] = {"RSMStartDate", "2007:09:30", "RSMStartTime", "05:06:00"};
    Prop properties[] = {{texts[0].data(), nullptr, nullptr, texts[1].data()},
                         {texts[2].data(), nullptr, nullptr, texts[3].data()}};
    observer.handler = &handler;
    observer.input = {properties, 2};
    EXPECT_EQ(handler.executeScheduleCommand(&observer.input, nullptr, *observer.controller), 1);
    EXPECT_TRUE(observer.finished);
    EXPECT_FALSE(handler.isScheduleCurrent());
    EXPECT_NE(workspace.read("schedule.xml").find("<RSMEndTime>05:36:00</RSMEndTime>"), std::string::npos);
}

TEST(Texts, TaggedValues) {
    EXPECT_EQ(records::getTagEndIndex("", "<a>"), 0);
    EXPECT_EQ(records::getTagEndIndex("text", ""), 0);
    EXPECT_EQ(records::getTagEndIndex("<a<a>", "<a>"), 5);
    const auto value = [](const char* tag, std::int32_t start) {
        return std::string(records::getStringBuffer("<Grace>30</Grace>", tag, start, "any").get());
    };
    EXPECT_EQ(value("</Grace>", 7), "30");
    EXPECT_EQ(value("</Grace>", 9), "string found but before the first string");
    EXPECT_EQ(value("</Rate>", 7), "str not found");
}

struct NumberRow {
    support::RowName name;
    std::string_view text;
    std::int32_t number;
};

const support::Rows<NumberRow> numberRows(
    "Texts/Numbers",
    {
        {"nothing", "", 0},
        {"blanks alone", "  ", 0},
        {"digits", "12", 12},
        {"every blank before", " \t\n\v\f\r7", 7},
        {"letters behind", "-12 minutes", -12},
        {"plus", "+5", 5},
        {"minus alone", "-", 0},
        {"two minuses", "--5", 0},
        {"plus and minus", "+-5", 0},
        {"blank behind the sign", "- 5", 0},
        {"character before the digits", "/5", 0},
        {"character behind the digits", ":5", 0},
        {"colon inside", "5:6", 5},
        {"hexadecimal", "0x10", 0},
        {"noughts before", "005", 5},
        {"decimals", "5.9", 5},
        {"largest", "2147483647", 2147483647},
        {"above the largest", "2147483648", std::numeric_limits<std::int32_t>::max()},
        {"below the smallest", "-2147483649", std::numeric_limits<std::int32_t>::min()},
    },
    [](const NumberRow& row) { EXPECT_EQ(platform::readNumber(row.text), row.number); });

TEST(Texts, NumbersInPlaces) {
    EXPECT_EQ(platform::readNumber("2026:03", 5, 2), 3);
    EXPECT_EQ(platform::readNumber("2026:03", 3, 1), 6);
    EXPECT_EQ(platform::readNumber("2026", 4, 2), 0);
    EXPECT_EQ(platform::readNumber("2026", 9, 2), 0);
}

struct MomentRow {
    support::RowName name;
    const char* date;
    const char* time;
    std::int64_t moment;
};

// Seconds from 1970 on in GMT; each field has its place and its length, whatever stands between them.
const support::Rows<MomentRow> momentRows("Texts/Moments",
                                          {
                                              {"first", "1970:01:01", "00:00:00", 0},
                                              {"usual", "2026:03:01", "10:20:30", 1772360430},
                                              {"other signs between", "2026-03-01", "10.20.30", 1772360430},
                                              {"digits between", "20261031011", "101201301", 1772360430},
                                              {"last of a leap day", "2024:02:29", "23:59:59", 1709251199},
                                              {"one too many of each", "2026:12:32", "24:60:60", 1798851660},
                                          },
                                          [](const MomentRow& row) {
                                              EXPECT_EQ(records::stringToTime(row.date, row.time),
                                                        row.moment);
                                          });

TEST(Texts, Calendar) {
    for (std::time_t day = 1772360430; day < 1772360430 + 366 * 86400; day += 86400) {
        EXPECT_STREQ(records::calendarText(day).data(), std::asctime(std::gmtime(&day)));
    }
}

TEST(Controller, OneUntilItIsDestroyed) {
    const agent::AgentHost host;
    const auto controller = ZephanRSMSingleTon::getInstance();
    EXPECT_EQ(controller, ZephanRSMSingleTon::getInstance());
    ZephanRSMSingleTon::destroyInstance();
    EXPECT_EQ(ZephanRSMSingleTon::existing(), nullptr);
    // Who is still inside keeps what it uses; newcomers find another one, and the old one starts nothing.
    const auto next = ZephanRSMSingleTon::getInstance();
    EXPECT_NE(next, controller);
    EXPECT_EQ(controller->createThread(), -1);
    EXPECT_EQ(next->getRSMMode(), 0);
    ZephanRSMSingleTon::destroyInstance();
}

TEST(Messages, SubElements) {
    ConnectMessage connect("connect", "ns", 0, 0);
    EXPECT_EQ(connect.SetSubElementText("pollDuration", " -12 minutes"), 0);
    EXPECT_EQ(connect.SetSubElementText("pollingRate", "15s"), 0);
    EXPECT_EQ(connect.SetSubElementText("PollingRate", "1"), -1);
    EXPECT_EQ(textOf(connect, "pollDuration") + " " + textOf(connect, "pollingRate"), "-12 15");
    EXPECT_EQ(textOf(connect, "pollingrate"), "none");
    ConnectResponseMessage connected("connectResponse", nullptr, -1);
    EXPECT_EQ(textOf(connected, "currentPollingRate"), "-1");
    EXPECT_EQ(connected.SetSubElementText("currentPollingRate", "x"), 0);
    EXPECT_EQ(textOf(connected, "currentPollingRate"), "0");
    EXPECT_EQ(connected.SetSubElementText("pollingRate", "1"), -1);
    DisconnectMessage disconnect("disconnect", "ns", nullptr);
    EXPECT_EQ(textOf(disconnect, "memberName"), "none");
    EXPECT_EQ(disconnect.SetSubElementText("memberName", "operator"), 0);
    EXPECT_EQ(disconnect.SetSubElementText("member", "other"), -1);
    EXPECT_EQ(textOf(disconnect, "memberName"), "operator");
    DisconnectResponseMessage disconnected("disconnectResponse", "ns", nullptr);
    EXPECT_EQ(disconnected.SetSubElementText("disconnectResult", "x"), 0);
    bool release = true;
    EXPECT_STREQ(disconnected.GetAttributeText("xmlns", release), "ns");
    EXPECT_FALSE(release);
    EXPECT_EQ(disconnected.SetAttributeText("xmlns", "other"), -1);
}

TEST(Messages, UnknownOperationsAndNoMessage) {
    support::Lines lines;
    const agent::AgentHost host({&lines, nullptr, nullptr});
    ZephanServicesServiceImpl service;
    KRX::Messaging::WebServiceMessage message;
    EXPECT_EQ(service.CreateMessage("reboot", &message), -1);
    message.GetRequestHeader().SetOperation("reboot");
    EXPECT_EQ(service.Execute(&message), -1);
    EXPECT_EQ(service.Cleanup(&message), -1);
    message.GetRequestHeader().SetOperation(nullptr);
    EXPECT_EQ(service.Cleanup(&message), -1);
    EXPECT_EQ(lines.all,
              "50 ZephanServicesService::CreateMessage Unable to create message for reboot operation.\n|"
              "50 ZephanServicesService::Cleanup Unable to clean-up message for reboot operation.\n|"
              "50 ZephanServicesService::Cleanup Unable to clean-up message for  operation.\n|");
    lines.take();
    EXPECT_EQ(service.CreateMessage("connect", nullptr), -1);
    EXPECT_EQ(service.Execute(nullptr), -1);
    EXPECT_EQ(service.Cleanup(nullptr), -1);
    EXPECT_EQ(lines.all,
              "50 ZephanServicesService::CreateMessage Unable to create message for connect operation.\n|"
              "50 ZephanServicesService::Cleanup Unable to clean-up message for  operation.\n|");
}

// What a host may make of the message between the three steps of a call.
TEST(Messages, ObjectsOfAnotherOperation) {
    const agent::AgentHost host;
    ZephanServicesServiceImpl service;
    for (const auto& [built, executed] :
         {std::pair{"connect", "disconnect"}, std::pair{"disconnect", "connect"}}) {
        KRX::Messaging::WebServiceMessage message;
        EXPECT_EQ(service.CreateMessage(built, &message), 0);
        message.GetRequestHeader().SetOperation(executed);
        EXPECT_EQ(service.Execute(&message), -1) << executed;
        EXPECT_EQ(service.Cleanup(&message), 0) << executed;
    }
    for (const char* const operation : {"connect", "disconnect"}) {
        KRX::Messaging::WebServiceMessage empty;
        empty.GetRequestHeader().SetOperation(operation);
        EXPECT_EQ(service.Execute(&empty), -1) << operation;
        EXPECT_EQ(service.Cleanup(&empty), 0) << operation;
        KRX::Messaging::WebServiceMessage message;
        EXPECT_EQ(service.CreateMessage(operation, &message), 0);
        const std::unique_ptr<Serializable> request(
            message.SetRequestMsg(new KRX::Messaging::SerializableString(operation, "1")));
        EXPECT_EQ(service.Execute(&message), -1) << operation << " with a foreign request";
        EXPECT_EQ(service.Cleanup(&message), 0) << operation;
    }
    KRX::Messaging::WebServiceMessage message;
    EXPECT_EQ(service.CreateMessage("disconnect", &message), 0);
    EXPECT_EQ(service.Execute(&message), 0);
    EXPECT_EQ(service.Cleanup(&message), 0);
    EXPECT_EQ(service.Execute(&message), -1) << "after its clean-up";
    EXPECT_EQ(service.Cleanup(&message), 0) << "twice";
    ZephanRSMSingleTon::destroyInstance();
}

}  // namespace
