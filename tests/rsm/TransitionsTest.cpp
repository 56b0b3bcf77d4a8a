// From state to state: connects, schedules, disconnects and remote activity in every state.
#include "Rows.h"

namespace {

const Table schedules("Transitions/Schedules", __LINE__, R"(
idle, waiting, grace | 5 schedule 10:02:00 30 2 | 150..240/30 | 5 off, 120 grace, 240 off
    | "\n SCHEDULING RSM FOR Sun Mar  1 10:02:00 2026\n" | "sleep","ms":5000
    | "t":120.000,"thread":"Data Polling","event":"update-asset" | "RSM_START_TIME","2026-01-03 GMT 10:02:00"
    | "RSM_DELAY_PROFILE_START_TIME","0"
connect while waiting | 5 schedule 10:10:00 20 1; 62 connect 2 30 | 95..185/30 620..660/20
    | 5 off, 62 grace, 185 off, 600 grace, 660 off
connect and disconnect while waiting | 5 schedule 10:10:00 20 1; 61 connect 2 30; 62 disconnect | 620..660/20
    | 5 off, 61 grace, 65 off, 600 grace, 660 off
connect for no time while waiting | 5 schedule 10:10:00 20 1; 61 connect 0 30 | 620..660/20
    | 5 off, 61 grace, 65 off, 600 grace, 660 off
useless connect while waiting | 5 schedule 10:02:00 20 1; 61 connect 2 0 | 140..180/20
    | 5 off, 61 grace, 65 off, 120 grace, 180 off
due during grace, the pass counts | 5 connect 10 30; 40 schedule 10:03:00 20 2 | 35..185/30 205..285/20
    | 5 grace, 40 grace, 185 grace, 285 off | "t":185.000,"thread":"Data Polling","event":"update-asset"
    | "RSM_START_TIME","2026-01-03 GMT 10:03:05" | "RSM_FORCED_POLLING_RATE","20"
due exactly at a poll | 0.001 connect 10 30; 40 schedule 10:01:00 20 1 | 30.001..90.001/30 110.001 130.001
    | 0.001 grace, 40 grace, 90.001 grace, 130.001 off
waits on after grace | 5 connect 1 30; 40 schedule 10:05:00 30 1 | 35 65 330 360
    | 5 grace, 40 grace, 65 off, 300 grace, 360 off
a second one replaces the first | 5 schedule 10:02:00 30 2; 60 schedule 10:03:00 20 1 | 200..240/20
    | 5 off, 60 off, 180 grace, 240 off
in a finished thread's place | 5 connect 1 60; 100 schedule 10:02:00 60 1 | 65 180
    | 5 grace, 65 off, 100 off, 120 grace, 180 off | Thread started 3
the clock goes past its start | 5 schedule 12:00:00 30 1; 62 clock-step 7200 | 95 125 | 5 off, 65 grace, 125 off
no thread for it | 5 fail thread-start; 5 schedule 10:02:00 30 1; 10 connect 1 60 | 70 150 180
    | 10 grace, 70 off, 120 grace, 180 off
no service agent | 0 start data-source s.xml; 0 schedule 10:02:00 30 1 | |
    | "level":50,"text":"DataPollingTask(): Invalid Ext Handle" | "thread-end","result":1
)");

const Table activity("Transitions/RemoteActivity", __LINE__, R"(
during grace | 5 connect 10 30; 140 audit opened; 141 audit opened; 156 show state/resume.xml; 250 audit closed;
               300 audit closed; 306 show state/resume.xml
    | 35..875/30 | 5 grace, 140 activity, 305 grace, 875 off
    | 10:02:35</RSMStartTime> | <GracePeriod>10< | 10:05:05</RSMStartTime> | <GracePeriod>10<
over before the next poll | 5 connect 2 30; 40 audit opened; 41 audit closed | 35..155/30
    | 5 grace, 40 activity, 65 grace, 155 off
held beyond the period | 5 connect 1 30; 20 audit opened; 5000 audit closed | 35..5045/30
    | 5 grace, 20 activity, 5015 grace, 5045 off
again in the grace after it
    | 5 connect 2 30; 40 audit opened; 70 audit closed; 100 audit opened; 200 audit closed
    | 35..305/30 | 5 grace, 40 activity, 95 grace, 100 activity, 215 grace, 305 off
idle | 5 audit opened; 6 audit closed | |
began before force polling | 2 audit opened; 5 connect 1 30; 100 audit closed | 35..155/30
    | 5 grace, 125 grace, 155 off
began before, useless rate | 2 audit opened; 5 connect 1 0 | | 5 grace, 5 off
connect keeps the mode | 5 connect 10 30; 140 audit opened; 160 connect 1 30; 200 audit closed | 35..275/30
    | 5 grace, 140 activity, 160 activity, 245 grace, 275 off
a schedule falls due | 5 connect 10 30; 40 audit opened; 50 schedule 10:01:30 20 2; 200 audit closed
    | 35..95/30 115..315/20 | 5 grace, 40 activity, 50 activity, 95 activity, 215 grace, 315 off
)");

const Table disconnects("Transitions/Disconnects", __LINE__, R"(
grace with activity | 2 audit opened; 5 connect 1 30; 40 disconnect | 35 65 | 5 grace, 65 off | >Thread exited
a schedule waits | 5 connect 10 30; 40 schedule 10:02:00 30 1; 41 disconnect | 35 65 150 180
    | 5 grace, 40 grace, 65 off, 120 grace, 180 off
a schedule falls due before the last poll | 1 connect 10 30; 2 schedule 10:01:20 20 1; 65 disconnect | 31..91/30 111..151/20
    | 1 grace, 2 grace, 91 off, 91 grace, 151 off | >Thread exited | "RSM_START_TIME","2026-01-03 GMT 10:01:20"
)");

}  // namespace
