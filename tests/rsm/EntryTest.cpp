// Start-up and shut-down: what they take, what they refuse, what a stop leaves.
#include "Rows.h"

#include <gtest/gtest.h>

namespace {

TEST(Entry, StartsAndStops) {
    check(R"(
no InitParam | 0 start rsm null; 0 start rsm " \t "; 0 stop web-service null | |
    | "level":50,"text":"RSM Extension: InitParam is not defined in Agent Config file" | rsm null","result":-1
    | "level":50,"text":"RSM Extension: InitParam is not defined in Agent Config file" | "result":-1
    | "level":50,"text":"RSMWSExtnShutdown: null ph\n" | "result":-1 | !Setting Service Agent | !startup complete
no such file | 0 start rsm none.xml; 0 stop rsm | | | "level":50,"text":"\n  Error Parsing the File: none.xml | "result":-1
    | "level":40,"text":"ZPRSMExtShutdown : RSM extension handle is NULL." | "result":-1
blanks around the path | 0 start rsm " \tconfig.xml\t " | |
    | "level":250,"text":"Unable to get Handler for ScheduleRSMHandler in ZPRSMExtStartup.\n"
    | "level":250,"text":"Custom HVK Extension: RSM Extension startup complete.\n" | "result":0
a blank within it | 0 write "a b.xml" <C/>; 0 start rsm " a b.xml" | | | "result":0
the logger's configuration serves | 0 start logger config.xml; 0 start rsm null | | | rsm null","result":0
no path | 0 start data-source null; 0 stop data-source | |
    | "level":250,"text":"RSMDSExtn ERROR: Failed to create ScheduleRSMHandler object." | "result":-1
    | "level":250,"text":"Custom HVK Extension: RSM DataSource Extension shutdown complete.\n" | "result":0
the first service agent stays | 1 start web-service; 1 start rsm null; 1 stop web-service | | | Setting Service Agent
    | "level":250,"text":"Custom HVK Extension: RSM WebService Extension startup complete.\n"
    | "level":250,"text":"Custom HVK Extension: RSM WebService Extension startup complete.\n"
    | "level":250,"text":"Custom HVK Extension: RSM WebService Extension shutdown complete.\n" | "result":0
services | 1 service create; 1 service create; 2 connect 1 60; 3 service destroy; 3 service destroy; 3 service destroy
    | 62 | 2 grace, 62 off | "level":250,"text":"Custom HVK Extension: RSM WebService Extension CreateService complete.\n"
    | "level":250,"text":"Custom HVK Extension: RSM WebService Extension DestroyService complete.\n" | "result":0
a null handle stops nothing | 5 connect 1 30; 6 stop rsm null; 6 stop web-service; 6 stop data-source | 35 65
    | 5 grace, 65 off | rsm null","result":-1 | !thread-destroyed
stop while the logger runs | 5 connect 1 30; 6 stop rsm; 7 audit opened; 40 audit closed | 35..95/30
    | 5 grace, 7 activity, 65 grace, 95 off | "stop rsm","result":0 | !thread-destroyed
stop with a thread | 5 connect 10 30; 40 stop rsm; 44 stop logger; 45 disconnect | 35 | 5 grace
    | "t":47.000 | !thread-end | There is no active thread.
)");
    check(R"(
stop with a long sleep | 0 start rsm config.xml; 0 start web-service; 5 connect 10 60; 6 stop rsm; 6 stop rsm; 7 disconnect
    | | 5 grace | "thread-destroyed" | "level":250,"text":"\n Force Polling Thread FORCEFULLY shutdown complete."
    | "t":9.000,"thread":"host","event":"call","verb":"stop rsm","result":0 | "result":0 | There is no active thread.
stop just before the last poll | 0 start rsm config.xml; 0 start web-service; 5 connect 1 60; 63 stop rsm | 65
    | 5 grace, 65 off | "thread-end" | "\n Force Polling Thread shutdown complete." | "t":65.000 | "stop rsm","result":0
)");
}

}  // namespace
