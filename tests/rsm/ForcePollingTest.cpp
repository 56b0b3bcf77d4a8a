// Force polling from a connect call to its end: how often, how long, what the enterprise hears.
#include "Rows.h"

#include <gtest/gtest.h>

namespace {

const Table periods("ForcePolling", __LINE__, R"(
30 seconds | 5 connect 10 30 | 35..605/30 | 5 grace, 605 off
    | "thread-start","name":"Data Polling","result":0 | "thread-end","result":0
a minute holds one interval | 5 connect 10 45 | 50..455/45 | 5 grace, 455 off
a minute holds exactly one | 5 connect 2 60 | 65 125 | 5 grace, 125 off
a minute holds none | 5 connect 10 90 | | 5 grace, 5 off
disconnect | 5 connect 10 30; 100 disconnect operator-7 | 35..125/30 | 5 grace, 125 off
    | "Disconnect : Going to exit force polling after next poll. \n" | >Thread exited successfully.<
connect before the last poll | 5 connect 10 30; 100 disconnect; 110 connect 1 20 | 35..125/30 145..185/20
    | 5 grace, 110 grace, 185 off
second connect | 5 connect 10 30; 100 connect 5 20 | 35..125/30 145..425/20 | 5 grace, 100 grace, 425 off
    | "level":50,"text":"\n createThread --- Thread was already created." | "result":0,"stage"
late and shorter | 5 connect 10 30; 590 connect 1 30 | 35..665/30 | 5 grace, 590 grace, 665 off
the same again before the last poll | 5 connect 10 30; 590 connect 10 30 | 35..1205/30
    | 5 grace, 590 grace, 1205 off
at and after the end | 5 connect 1 30; 65 connect 1 30; 200 connect 1 30 | 35..125/30 230 260
    | 5 grace, 65 grace, 125 off, 200 grace, 260 off
rate 0 | 5 connect 10 0 | | 5 grace, 5 off | "result":0,"stage":"cleanup" | <currentPollingRate>60<
negative rate | 5 connect 10 -5 | | 5 grace, 5 off
negative duration | 5 connect -10 30 | | 5 grace, 5 off
numbers with tails | 5 connect " 1x" 15abc | 20..65/15 | 5 grace, 65 off
    | " Polling Rate = 15 seconds \n" | " Polling Duration = 1 min \n"
texts without digits | 5 connect ten often | | 5 grace, 5 off
beyond 32 bits | 5 connect 99999999999 -99999999999 | | 5 grace, 5 off
    | " Polling Rate = -2147483648 seconds \n" | " Polling Duration = 2147483647 min \n"
no duration | 5 call connect pollingRate=30 | | 5 grace, 5 off
the agent's own interval | 1 poll-interval 300; 5 connect 1 60 | 65 | 5 grace, 65 off | <currentPollingRate>300<
refused by the enterprise | 4 enterprise refuse; 5 connect 1 30; 50 enterprise accept | 35 65 | 5 grace, 65 off
    | "update-asset","result":-1 | "\n Failed to Update Properties...... \n" | "update-asset","result":0
    | "\n Properties Updated Succesfully.....\n"
no asset | 0 asset absent; 0 start rsm config.xml; 0 start web-service; 5 connect 1 30; 6 asset present;
           10 connect 1 30 | 40 70 | 10 grace, 70 off | *** Setting Service Agent pointer in | <currentPollingRate>-1<
    | "Can't send RSM profile to enterprise: Virtaul Asset 0 is null\n" | "thread-end","result":0
    | <currentPollingRate>60< | !"credentials"
the asset goes | 5 connect 1 30; 40 asset absent | 35 65 | 5 grace | "credentials","member":"device-0042"
    | Virtaul Asset 0 is null
no thread | 5 fail thread-construct; 5 connect 1 30; 6 disconnect; 7 connect 1 30 | 37 67 | 7 grace, 67 off
    | "connect 1 30","result":-1,"stage":"cleanup" | >There is no active thread.< | "connect 1 30","result":0
    | !Failed to start Force Polling
no thread start | 5 fail thread-start; 5 connect 1 30; 6 disconnect; 7 connect 1 30 | 37 67 | 7 grace, 67 off
    | "level":250,"text":"\n generateThread --- Failed to start Force Polling thread."
    | "connect 1 30","result":-1,"stage":"cleanup" | >There is no active thread.< | "connect 1 30","result":0
no web service | 0 start rsm config.xml; 5 connect 1 30 | |
    | "RSM Singleton Object is not there. Can't Continue. RSM Singleton should have been initialized in WSEStartup\n"
    | "result":-1,"stage":"service","response":null
no RSM extension | 0 start web-service; 5 connect 1 60 | 65 | 5 grace, 65 off
    | "level":250,"text":"Unable to save RSM state.\n"
unknown operation | 5 call Connect pollDuration=1 | |
    | "ZephanServicesService::CreateMessage Unable to create message for Connect operation.\n"
    | "result":-1,"stage":"create","response":null
undeclared sub-elements | 5 call connect pollDuration=1 PollingRate=30; 5 call disconnect pollDuration=1 | |
    | "result":-1,"stage":"create" | "result":-1,"stage":"create"
)");

}  // namespace
