// State files outlive a version: a device is updated, or goes back, while RSM runs or an order waits. The records here are what 1.0.0
// and 1.1.0 left when their agent was killed, byte for byte. This version leaves the same, and goes on with it as they do.
#include "Rows.h"

namespace {

const Table kept("StateFiles/Versions", __LINE__, R"(
connect | 5 connect 10 30; 240 unload; 241 show-saved; 241 show-order; 300 again | 35..215/30 330..600/30
    | 5 grace, 300 grace, 600 off
    | "text":"<ResumeRSM><RSMStartDate>2026:03:01</RSMStartDate><RSMStartTime>10:00:05</RSMStartTime><PollingRate>30</PollingRate><GracePeriod>10</GracePeriod></ResumeRSM>"}
    | "text":""}
shorter connect | 5 connect 1000 30; 40 connect 9 7; 71 unload; 72 show-saved; 80 again | 35 65 87..528/7
    | 5 grace, 40 grace, 80 grace, 528 off
    | "text":"<ResumeRSM><RSMStartDate>2026:03:01</RSMStartDate><RSMStartTime>10:01:05</RSMStartTime><PollingRate>7</PollingRate><GracePeriod>09</GracePeriod></ResumeRSM>"}
activity grace | 5 connect 2 15; 30 audit opened; 200 audit closed; 230 unload; 231 show-saved; 235 again | 20..215/15 250..295/15
    | 5 grace, 30 activity, 200 grace, 235 grace, 295 off
    | "text":"<ResumeRSM><RSMStartDate>2026:03:01</RSMStartDate><RSMStartTime>10:03:20</RSMStartTime><PollingRate>15</PollingRate><GracePeriod>02</GracePeriod></ResumeRSM>"}
shorter order | 5 schedule 11:00:00 1000000 20000; 6 schedule 10:10:00 30 2; 240 unload; 241 show-order; 300 again | 630..720/30
    | 5 off, 6 off, 300 off, 600 grace, 720 off
    | "text":"<RSMExecuteCommand><RSMStartDate>2026:03:01</RSMStartDate><RSMStartTime>10:10:00</RSMStartTime><RSMEndDate>2026:03:01</RSMEndDate><RSMEndTime>10:12:00</RSMEndTime><PollingRate>30</PollingRate><GracePeriod>2</GracePeriod></RSMExecuteCommand>eCommand>"}
order as it was spelled | 5 command ScheduleRSM RSMStartDate=2026-03-01 RSMStartTime=10-06-00 PollingRate=0030x GracePeriod=005;
    240 unload; 241 show-order; 300 again | 390..660/30 | 5 off, 300 off, 360 grace, 660 off
    | "text":"<RSMExecuteCommand><RSMStartDate>2026-03-01</RSMStartDate><RSMStartTime>10-06-00</RSMStartTime><RSMEndDate>2026:03:01</RSMEndDate><RSMEndTime>10:11:00</RSMEndTime><PollingRate>0030x</PollingRate><GracePeriod>005</GracePeriod></RSMExecuteCommand>"}
order that runs | 5 schedule 10:02:00 30 6; 240 unload; 241 show-saved; 241 show-order; 300 again | 150..210/30 330..480/30
    | 5 off, 120 grace, 300 grace, 300 grace, 480 off
    | "text":"<ResumeRSM><RSMStartDate>2026:03:01</RSMStartDate><RSMStartTime>10:02:00</RSMStartTime><PollingRate>30</PollingRate><GracePeriod>06</GracePeriod></ResumeRSM>"}
    | "text":"<RSMExecuteCommand><RSMStartDate>2026:03:01</RSMStartDate><RSMStartTime>10:02:00</RSMStartTime><RSMEndDate>2026:03:01</RSMEndDate><RSMEndTime>10:08:00</RSMEndTime><PollingRate>30</PollingRate><GracePeriod>6</GracePeriod></RSMExecuteCommand>"}
)");

}  // namespace
