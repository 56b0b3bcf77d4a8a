// Remote activity in audit messages: what the controller is told, and the modality script.
#include "logger/Logs.h"
#include "support/Replay.h"
#include "support/Rows.h"

#include <sstream>
#include <string>

#include <gtest/gtest.h>

namespace {

using support::Replay;
using support::RowName;
using support::Rows;

const std::string kTexts =
    "<TunnelMessags><OpenMessage><Message>open</Message><Message>begin</Message></OpenMessage>"
    "<CloseMessage><Message>close</Message></CloseMessage><AbortMessage>abort</AbortMessage></TunnelMessags>"
    "<FileMessages><OpenMessage><Message>send</Message></OpenMessage>"
    "<CloseMessage><Message>sent</Message></CloseMessage></FileMessages>";
const std::string kReport = "<ListnerSet><RDListner>1</RDListner></ListnerSet>";
const std::string kRun = "<ListnerSet><TunnelListner>1</TunnelListner></ListnerSet>";
const std::string kScript = "<Script>echo run >> test.ran</Script>";
const std::string kGoing = "\n*******Going To Execute Modality Script***********";

class Detection {
  public:
    /// Replays audit messages ("log ..." for others), parted by commas, one a second from second 1 on, within
    /// a force poll.
    Replay replay(const std::string& settings, const std::string& messages) const {
        workspace_.write("config", logs::configuration(settings));
        std::ostringstream scenario;
        scenario << "0 route off\n0 start data-source state/schedule.xml\n0 start logger config\n0 start rsm "
                    "config\n"
                    "0 start web-service\n0 connect 60 60\n";
        std::istringstream all(messages);
        int second = 1;
        for (std::string one; std::getline(all, one, ','); ++second) {
            scenario << second << (one.find("log ") == 0 ? " " + one : " audit \"" + one + "\"") << "\n";
        }
        scenario << "30 end\n";
        return {workspace_, scenario.str()};
    }

    const support::Workspace workspace_;
};

class DetectionTest : public testing::Test, protected Detection {};

/// In the order of the trace: "R" and second for a report that activity begins, "S" for the script's start.
std::string beginnings(const Replay& replay) {
    std::string all;
    for (const auto& event : replay.events()) {
        const bool report = event.at("event") == "update-asset" && event.at("thread") == "host";
        if ((report && support::property(event, "RSM_MODE") == "FORCE_POLL_ACTIVITY") ||
            (event.at("event") == "log" && event.at("text") == kGoing)) {
            all += (report ? "R" : "S") + std::to_string(event.at("t").get<int>()) + " ";
        }
    }
    return all;
}

struct ActivityRow {
    RowName name;  ///< the messages, or a word on the settings and ": " before them
    const char* beginnings;
    std::string settings = kTexts + kReport + kRun + kScript;
};

const Rows<ActivityRow> activityRows("Detection/Activity",
                                     {
                                         {"OPEN,ope,", ""},
                                         {"He said open.\\n", "R1 S1 "},
                                         {"open,begin,close,open", "R1 S1 "},
                                         {"open,begin,close,close,open", "R1 S1 R5 S5 "},
                                         {"close,close,open,close,begin", "R3 S3 R5 S5 "},
                                         {"open begin open,close,open", "R1 S1 R3 S3 "},
                                         {"close open,open", "R2 S2 "},
                                         {"open,open,open,now abort,open", "R1 S1 R5 S5 "},
                                         {"open abort,abort,open", "R3 S3 "},
                                         {"send,open,abort,open", "R1 S1 "},
                                         {"send,send,sent,sent,sent,send", "R1 S1 R6 S6 "},
                                         {"open,send,close,sent,send", "R1 S1 R5 S5 "},
                                         // The tunnel is looked at first: nothing is active in between.
                                         {"open,send close,open", "R1 S1 R2 S2 "},
                                         {"send,sent open", "R1 S1 "},
                                         {"log info open,log audit open,open,log info close,open", "R3 S3 "},
                                         {"no texts: open,send", "", kReport + kRun + kScript},
                                         {"report alone: open,close", "R1 ", kTexts + kReport + kScript},
                                         {"script alone: open,close", "S1 ", kTexts + kRun + kScript},
                                         {"no script: open,close", "R1 ", kTexts + kReport + kRun},
                                     },
                                     [](const ActivityRow& row) {
                                         const std::string& name = row.name.text;
                                         const auto colon = name.find(": ");
                                         const auto messages =
                                             name.substr(colon == name.npos ? 0 : colon + 2);
                                         EXPECT_EQ(beginnings(Detection().replay(row.settings, messages)),
                                                   row.beginnings);
                                     });

struct ScriptRow {
    RowName name;
    const char* script;
    const char* line;
};

const Rows<ScriptRow> scriptRows(
    "Detection/Script",
    {
        {"runs", "echo run &gt; test.ran", "\n Script executed Successfully."},
        {"fails", "echo run &gt; test.ran; exit 3", "Error while running script."},
        {"is killed", "echo run &gt; test.ran; kill -9 $$", "Error while running script."},
        {"is not there", "echo run &gt; test.ran; /no/such/program", "Error while running script."},
    },
    [](const ScriptRow& row) {
        const Detection detection;
        const Replay outcome =
            detection.replay(kTexts + kRun + "<Script>" + row.script + "</Script>", "open");
        EXPECT_EQ(outcome.countLogged(50, row.line), 1);
        EXPECT_EQ(outcome.call("audit open").at("result"), 0);
        EXPECT_EQ(detection.workspace_.read("test.ran"), "run\n");
    });

TEST_F(DetectionTest, ScriptInheritsNoFileOfTheModule) {
    replay(kTexts + kRun + "<RSMResumeStatusFile>state/resume.xml</RSMResumeStatusFile>" +
               "<Script>readlink /proc/self/fd/* &gt; test.fds</Script>",
           "open");
    const std::string descriptors = workspace_.read("test.fds");
    EXPECT_NE(descriptors.find("test.fds"), std::string::npos);
    EXPECT_EQ(descriptors.find(workspace_.path("log").string()), std::string::npos) << descriptors;
    EXPECT_EQ(descriptors.find(workspace_.path("state").string()), std::string::npos) << descriptors;
}

TEST_F(DetectionTest, RoutedLinesOfADeliveryComeBackDuringIt) {
    const std::string listeners =
        "<ListnerSet><TunnelListner>1</TunnelListner><FileListner>1</FileListner></ListnerSet>";
    workspace_.write("config", logs::configuration(kTexts + kScript + listeners));
    const Replay outcome(workspace_, "0 start logger config\n1 audit \"open\\n\"\n");
    const std::string lines = kGoing + "\n Script executed Successfully.";
    EXPECT_EQ(workspace_.read("test.ran"), "run\n");
    EXPECT_EQ(logs::withoutStamps(workspace_.read("log/k.xml")),
              "|open\n|" + kGoing + "|\n Script executed Successfully.");
    EXPECT_EQ(outcome.standardOutput(), lines + "open\n");
}

}  // namespace
