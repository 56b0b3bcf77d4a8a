// Agents that send through a thread of their own, lock while they log, answer late, and end threads in every way: nothing
// waits for them that need not, and what the enterprise hears last is true.
#include "Rows.h"

namespace {

const Table harsh("HarshAgent", __LINE__, R"(
a restart in the middle of a session | 0 enterprise thread on; 0 saved 2026:03:01 09:58:00 30 10;
    0 ordered 11:00:00 11:02:00 30 2; 0 start data-source state/schedule.xml; 0 start logger config.xml;
    0 start rsm config.xml | 30..480/30 3630..3720/30 | 0 grace, 0 grace, 480 off, 3600 grace, 3720 off
activity told through a link | 1 enterprise thread on; 5 connect 1 30; 40 audit opened; 50 audit closed
    | 35..95/30 | 5 grace, 40 activity, 65 grace, 95 off
a log that is locked | 1 log-lock on; 1 enterprise thread on; 5 connect 1 30; 40 audit opened; 50 audit closed; 200 stop logger
    | 35..95/30 | 5 grace, 40 activity, 65 grace, 95 off
)");

}  // namespace
