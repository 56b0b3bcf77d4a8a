// The exports as such: which there are, what they do with nulls and odd lists, that the library goes.
#include "Library.h"
#include "lib/AgentHost.h"
#include "sim/time/Clock.h"
#include "sim/time/Scheduler.h"
#include "support/Lines.h"

#include <array>
#include <cstdio>
#include <cstring>
#include <sstream>
#include <vector>

#include <gtest/gtest.h>

namespace {

char* newText(const char* text) {
    return std::strcpy(new char[std::strlen(text) + 1], text);
}

/// A list as `ZPXRSMDSDestroyPropList` wants it, with every field set.
PropList* newList(const std::vector<std::array<const char*, 2>>& properties) {
    auto* const list =
        new PropList{new Prop[properties.size()]{}, static_cast<std::int32_t>(properties.size())};
    for (std::size_t i = 0; i < properties.size(); ++i) {
        list->properties[i] = {newText(properties[i][0]), newText("2"), newText("3"),
                               newText(properties[i][1])};
    }
    return list;
}

TEST(Exports, TheseAndNoOthers) {
    FILE* const output = ::popen("'" NM "' -D --defined-only '" ZEPHAN_MODULE "'", "r");
    std::string names;
    std::array<char, 256> line{};
    while (std::fgets(line.data(), line.size(), output) != nullptr) {
        std::istringstream words(line.data());
        std::string address, kind, name;
        words >> address >> kind >> name;
        // Each bears the version of the interface, which is an entry of its own.
        const auto version = name.find("@@ZEPHAN_RSM_LOGGER_1");
        names += kind + " " +
                 (version == std::string::npos ? name + " without a version" : name.substr(0, version)) +
                 "\n";
    }
    EXPECT_EQ(::pclose(output), 0);
    EXPECT_EQ(
        names,
        "A ZEPHAN_RSM_LOGGER_1 without a version\nT ZPRSMExtnShutdown\nT ZPRSMExtnStartup\nT ZPXRSMDSDestoryResponse\nT ZPXRSMDSDestroyPropList\n"
        "T ZPXRSMDSExectue\nT ZPXRSMDSGet\nT ZPXRSMDSSet\nT ZPXRSMDSShutdown\nT ZPXRSMDSStartup\n"
        "T ZPXRSMLoggerAudit\nT ZPXRSMLoggerLog\nT ZPXRSMLoggerShutdown\nT ZPXRSMLoggerStatup\n"
        "T ZPXRSMWSCreateService\nT ZPXRSMWSDestroyService\nT ZPXRSMWSShutdown\nT ZPXRSMWSStartup\n");
}

TEST(Exports, NullsAndOddLists) {
    const support::Workspace workspace;
    support::Lines lines;
    sim::Clock clock{std::chrono::microseconds(0)};
    sim::Scheduler scheduler(clock);
    agent::AgentHost host({&lines, nullptr, &scheduler});
    {
        const Library library;
        Families families(library, host.serviceAgent(), workspace);
        EXPECT_EQ(library.ZPXRSMWSStartup(nullptr, host.serviceAgent()), -1);
        EXPECT_EQ(lines.take(), "50 \nRSMWSExtnStartup: ZephanServices Invalid (null) handle\n|");
        EXPECT_EQ(library.ZPXRSMWSCreateService(nullptr, nullptr), -1);
        EXPECT_EQ(lines.take(), "50 ZephanServices Invalid (null) ppSvc\n|");
        EXPECT_EQ(library.ZPXRSMWSDestroyService(nullptr, nullptr), 0);
        EXPECT_EQ(lines.take(),
                  "250 Custom HVK Extension: RSM WebService Extension DestroyService complete.\n|");
        EXPECT_EQ(library.ZPXRSMDSGet(), 2);
        EXPECT_EQ(library.ZPXRSMDSSet(), 2);
        EXPECT_EQ(library.ZPXRSMDSDestoryResponse(), -1);
        EXPECT_EQ(library.ZPXRSMLoggerLog(50, nullptr), -1);
        EXPECT_EQ(library.ZPXRSMLoggerAudit(nullptr), -1);

        const auto destroy = [&](PropList* list) {
            lines.take();
            return library.ZPXRSMDSDestroyPropList(nullptr, nullptr, list) == 0 ? lines.take() : "failed";
        };
        const std::string deleting = "50 \n ZPXRSMDSDestroyPropList: deleting properties.... \n|";
        EXPECT_EQ(destroy(nullptr),
                  "50 ZPXRSMDSDestroyPropList: null property list, nothing to destroy?!\n|");
        EXPECT_EQ(destroy(new PropList{nullptr, 5}),
                  "50 ZPXRSMDSDestroyPropList: null properties array?!\n|");
        EXPECT_EQ(destroy(new PropList{new Prop[1]{}, 0}), deleting);
        EXPECT_EQ(destroy(new PropList{new Prop[1]{}, -3}), deleting);
        EXPECT_EQ(destroy(new PropList{new Prop[2]{}, 2}), deleting);

        const std::string scheduleFile = workspace.path("schedule.xml").string();
        EXPECT_EQ(library.ZPXRSMDSStartup(nullptr, scheduleFile.c_str()), 0);
        void* handle = nullptr;
        EXPECT_EQ(library.ZPXRSMDSStartup(&handle, scheduleFile.c_str()), 0);
        EXPECT_NE(handle, nullptr);
        ASSERT_EQ(families.start(Families::webService), 0);
        const auto schedule = [&](PropList* list, PropList** response) {
            lines.take();
            const int result = library.ZPXRSMDSExectue(nullptr, nullptr, "ScheduleRSM", list, response);
            EXPECT_EQ(lines.all.find("Error in Scheduling"), std::string::npos);
            EXPECT_EQ(destroy(list), deleting);
            return result;
        };
        PropList* response = nullptr;
        PropList* const order =
            newList({{"RSMStartDate", "2999:01:01"}, {"RSMStartTime", "00:00:00"}, {"x", "y"}});
        delete[] std::exchange(order->properties[2].name, nullptr);
        EXPECT_EQ(schedule(order, &response), 0);
        ASSERT_NE(response, nullptr);
        ASSERT_EQ(response->count, 5);
        EXPECT_STREQ(response->properties[1].value, "2999:01:01");
        EXPECT_EQ(response->properties[1].field2, nullptr);
        EXPECT_EQ(response->properties[1].field3, nullptr);
        EXPECT_EQ(destroy(response), deleting);
        // Without a place for the answer: the same result, but no line for what is rejected.
        EXPECT_EQ(schedule(newList({{"PollingRate", "0"}}), nullptr), 1);

        EXPECT_EQ(library.ZPXRSMDSExectue(nullptr, nullptr, "ExitRSM", nullptr, nullptr), 1);
        const PropList negative{nullptr, -1};
        EXPECT_EQ(library.ZPXRSMDSExectue(nullptr, nullptr, "ScheduleRSM", &negative, nullptr), 0);
        EXPECT_EQ(library.ZPXRSMDSExectue(nullptr, nullptr, "ExitRSM", nullptr, nullptr), 0);
        EXPECT_EQ(library.ZPRSMExtnStartup(nullptr, nullptr, "config.xml"), 0);
        EXPECT_EQ(families.stop(Families::rsm), 0);
    }
    EXPECT_FALSE(Library::isLoaded());
}

}  // namespace
