// A process whose XML toolkit cannot be started or stopped. This program's functions stand before the
// toolkit's own; each case has a process of its own, since there is no way back.
#include "config/XMLConfigData.h"
#include "lib/AgentHost.h"
#include "lib/Module.h"
#include "support/Lines.h"
#include "support/Rows.h"
#include "support/Workspace.h"

#include <cstdlib>
#include <functional>
#include <stdexcept>
#include <string>

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/PanicHandler.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/RuntimeException.hpp>

namespace {

using Start = void(const char*, const char*, xercesc::PanicHandler*, xercesc::MemoryManager*);

std::function<void(xercesc::PanicHandler&)> afterStart;
std::function<void()> insteadOfStop;

}  // namespace

XERCES_CPP_NAMESPACE_BEGIN

__attribute__((visibility("default"))) void XMLPlatformUtils::Initialize(const char* locale, const char* home,
                                                                         PanicHandler* panic,
                                                                         MemoryManager* memory) {
    Dl_info here{};
    ::dladdr(reinterpret_cast<void*>(static_cast<Start*>(&Initialize)), &here);
    reinterpret_cast<Start*>(::dlsym(RTLD_NEXT, here.dli_sname))(locale, home, panic, memory);
    if (afterStart) {
        afterStart(*panic);
    }
}

void XMLPlatformUtils::Terminate() {
    if (insteadOfStop) {
        insteadOfStop();
    }
}

XERCES_CPP_NAMESPACE_END

namespace {

/// Loads `times` times: the lines that are logged, and how each load ends.
std::string loads(int times) {
    const support::Workspace workspace;
    workspace.write("config.xml", "<z><Script>s</Script></z>");
    const std::string path = workspace.path("config.xml").string();
    support::Lines lines;
    const agent::AgentHost host({&lines, nullptr, nullptr});
    while (times-- > 0) {
        try {
            lines.all += "script=" + loadConfiguration(path)->getScript() + "|";
        } catch (const std::runtime_error& error) {
            lines.all +=
                std::string(error.what()).replace(std::string(error.what()).find(path), path.size(), "FILE") +
                "|";
        }
    }
    const auto data = XMLConfigData::instance();
    return lines.all + (data == nullptr ? "no object" : data->getFileSize() + "," + data->getScript());
}

void expectLoads(int times, const std::string& expected) {
    EXPECT_EXIT(
        {
            const std::string seen = loads(times);
            std::fputs(seen.c_str(), stderr);
            std::_Exit(seen == expected ? 0 : 1);
        },
        testing::ExitedWithCode(0), "")
        << "expected: " << expected;
}

[[noreturn]] void throwMessage() {
    throw xercesc::RuntimeException("Source.cpp", 1, xercesc::XMLExcepts::Trans_CantCreateCvtrFor);
}

const std::string kRefusal =
    " The XML toolkit cannot be started: FILE was not read. \n  Try again; when that fails too, restart the agent. \n |";

struct StartRow {
    support::RowName name;
    void (*failure)(xercesc::PanicHandler& handler);
    std::string text;
};

const support::Rows<StartRow> startRows(
    "ToolkitFailure/CannotBeStarted",
    {
        {"message of the toolkit", [](auto&) { throwMessage(); },
         "unable to create converter for '{0}' encoding"},
        {"memory", [](auto&) { throw xercesc::OutOfMemoryException(); }, "out of memory"},
        {"panic", [](auto& handler) { handler.panic(xercesc::PanicHandler::Panic_NoTransService); },
         "Could not load a transcoding service"},
    },
    [](const StartRow& row) {
        afterStart = row.failure;
        expectLoads(
            2, "250 XML toolkit initialization error: " + row.text + "|" + kRefusal + kRefusal + "5000000,");
        afterStart = nullptr;
    });

/// The toolkit stays in the process while the module goes and comes back, since the host uses it, too.
TEST(ToolkitFailure, IsKnownToTheModuleLoadedAgain) {
    EXPECT_EXIT(
        {
            const support::Workspace workspace;
            workspace.write("config.xml", "<z><Script>s</Script></z>");
            const agent::AgentHost host;
            for (const bool fails : {true, false}) {
                afterStart = [=](auto&) { fails ? throwMessage() : void(); };
                const agent::Module module(MODULE);
                if (module.ZPXRSMLoggerStatup(workspace.path("config.xml").string().c_str()) != -1) {
                    std::_Exit(1);
                }
            }
            std::_Exit(0);
        },
        testing::ExitedWithCode(0), "");
}

TEST(ToolkitFailure, CannotBeStopped) {
    insteadOfStop = throwMessage;
    expectLoads(2, "250 XML toolkit teardown error: unable to create converter for '{0}' encoding|script=s|" +
                       kRefusal + "5000000,s");
    insteadOfStop = nullptr;
}

}  // namespace
