// Agents that send through a thread of their own, lock while they log, answer late, and end threads in every
// way: nothing waits for them that need not, and what the enterprise hears last is true.
#include "Rows.h"

namespace {

const Table harsh("HarshAgent", __LINE__, R"(
a restart in the middle of a session | 0 enterprise thread on; 0 saved 2026:03:01 09:58:00 30 10;
    0 ordered 11:00:00 11:02:00 30 2; 0 start data-source state/schedule.xml; 0 start logger config.xml;
    0 start rsm config.xml | 30..480/30 3630..3720/30 | 0 grace, 480 off, 3600 grace, 3720 off
activity told through a link | 1 enterprise thread on; 5 connect 1 30; 40 audit opened; 50 audit closed
    | 35..95/30 | 5 grace, 40 activity, 65 grace, 95 off
a log that is locked | 1 log-lock on; 1 enterprise thread on; 5 connect 1 30; 40 audit opened; 50 audit closed; 200 stop logger
    | 35..95/30 | 5 grace, 40 activity, 65 grace, 95 off
a connect during the report of the end | 1 enterprise delay 10; 5 connect 1 30; 80 connect 1 30 | 45 75 125 155
    | 15 grace, 85 off, 95 grace, 165 off
a connect that would overtake the report of the end | 5 connect 1 30; 60 enterprise delay 10; 69 enterprise delay 1; 70 connect 1 30
    | 35 65 106 136 | 5 grace, 75 off, 76 grace, 137 off
activity during a report | 1 enterprise delay 10; 5 connect 1 30; 40 enterprise thread on; 41 audit opened; 60 audit closed
    | 45 75 115 | 15 grace, 51 activity, 85 grace, 125 off
a start beside a late answer | 1 enterprise delay 10; 5 connect 5 30; 6 schedule 11:00:00 30 1; 40 start logger config.xml
    | 55..325/30 3640 3670 | 15 grace, 25 grace, 335 off, 3610 grace, 3680 off
)");

const char* const kStopsBesideReports = R"(
a stop beside a report | 1 thread-destroy STEP; 1 enterprise delay 10; 5 connect 10 30; 6 stop logger;
    40 start logger config.xml; 40 start rsm config.xml; 41 connect 1 30 | 81 111 | %s51 grace, 121 off
    | "t":9.000,"thread":"host","event":"call","verb":"stop logger","result":0
a stop beside a link | 1 thread-destroy STEP; 1 enterprise delay 10; 1 enterprise thread on; 5 connect 10 30; 6 stop logger;
    40 start logger config.xml; 40 start rsm config.xml; 41 connect 1 30 | 81 111 | %s51 grace, 121 off
    | "t":9.000,"thread":"host","event":"call","verb":"stop logger","result":0
)";

/// What a thread that is ended at once was about to report is not heard.
const Table stopsAtOnce("HarshAgent", __LINE__ - 10, support::replaced(kStopsBesideReports, "%s", ""),
                        {"anywhere", "unwind"});
const Table stopsLater("HarshAgent", __LINE__ - 12,
                       support::replaced(kStopsBesideReports, "%s", "15 grace, "), {"sleep", "leave"});

const Table stopsAsleep("HarshAgent", __LINE__, R"(
a stop beside a sleep | 1 thread-destroy STEP; 5 connect 10 30; 6 stop logger; 40 start logger config.xml;
    40 start rsm config.xml; 41 connect 1 30 | 70..130/30 | 5 grace, 40 grace, 41 grace, 130 off
    | "t":9.000,"thread":"host","event":"call","verb":"stop logger","result":0
)",
                        {"sleep", "anywhere", "unwind", "leave"});

}  // namespace
