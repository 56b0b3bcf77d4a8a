// The ScheduleRSM command, the schedule file, and what a restart makes of it.
#include "Rows.h"

namespace {

const Table accepted("ScheduleCommand/Accepted", __LINE__, R"(
a date alone | 5 command ScheduleRSM RSMStartDate=2007:09:30 GracePeriod=1 | 65 | 5 grace, 65 off
    | "level":40,"text":"\n RSMStartDate = 2007:09:30 " | passed 2026:03:01 10:00:05 60 1
a time alone | 5 command ScheduleRSM RSMStartTime=05:06:00 RSMStartDate=immediate GracePeriod=1 | 65
    | 5 grace, 65 off | passed 2026:03:01 10:00:05 60 1
not these names | 5 command ScheduleRSM pollingrate=1 PollingRate=null Any=x GracePeriod=1 | 65 | 5 grace, 65 off
    | passed 2026:03:01 10:00:05 60 1
named twice | 5 command ScheduleRSM PollingRate=0 GracePeriod=1 PollingRate=20 | 25..65/20 | 5 grace, 65 off
    | passed 2026:03:01 10:00:05 20 1
other separators, month 15
    | 5 command ScheduleRSM RSMStartDate=2024-15-01 RSMStartTime=10-01-00 GracePeriod=525602; 6 show-order
    | 65 125 | 5 grace, 125 off | passed 2024-15-01 10-01-00 60 525602 | >2024-15-01</RSMStartDate><RSMStartTime>10-01-00<
    | <RSMEndDate>2026:03:01</RSMEndDate><RSMEndTime>10:03:00<
ten minutes ago | 5 schedule 09:50:05 30 30 | 35..1205/30 | 5 grace, 1205 off | passed 2026:03:01 09:50:05 30 30
no schedule file | 0 start data-source nowhere/s.xml; 0 start rsm config.xml; 5 command ScheduleRSM GracePeriod=1 | 65
    | 5 grace, 65 off | "level":250,"text":"\n Unable to put the schedule in file = nowhere/s.xml"
    | passed 2026:03:01 10:00:05 60 1 | !GOING TO PUT
)");

const Table refused("ScheduleCommand/Refused", __LINE__, R"(
long time | 5 command ScheduleRSM RSMStartTime="05:06:00 " RSMStartDate=IMMEDIATE | | | failed RSMStartDate RSMStartTime
negative hour | 5 command ScheduleRSM RSMStartTime=-1:06:00 | | | failed RSMStartTime
month 0 | 5 command ScheduleRSM RSMStartDate=2026:00:01 | | | failed RSMStartDate
year 0 | 5 command ScheduleRSM RSMStartDate=0000:09:30 | | | failed RSMStartDate
no numbers | 5 command ScheduleRSM PollingRate=abc GracePeriod= | | | failed PollingRate GracePeriod
judged once | 5 command ScheduleRSM PollingRate=20 PollingRate=0 PollingRate=-1 | | | failed PollingRate
ends this second | 5 schedule 09:30:05 30 30 | | | RSM is scheduled for elapsed date.
)");

// The longest values are taken, longer ones are refused whatever they are.
const std::string kZeros(98, '0');
const Table lengths[] = {
    {"ScheduleCommand/Lengths", __LINE__,
     "longest | 5 command ScheduleRSM GracePeriod=" + kZeros + "1 | 65 | 5 grace, 65 off | " + kZeros +
         "1</GracePeriod></RSMExecuteCommand>\""},
    {"ScheduleCommand/Lengths", __LINE__,
     "too long | 5 command ScheduleRSM PollingRate=1" + kZeros + "0 GracePeriod=0" + kZeros +
         "1 RSMStartDate=2026:03:01" + kZeros + " | | | failed RSMStartDate PollingRate GracePeriod"},
};

const Table restarts("ScheduleFile/Restarts", __LINE__, R"(
nothing ordered | 1 show-order; 2 stop rsm; 2 stop logger; 3 show-order; 4 again; 5 show-order; 5 stop rsm; 6 show-order | |
    | "text":""} | "text":null} | "text":""} | "text":null}
killed before the start | 5 schedule 10:10:00 30 2; 300 unload; 300 again | 630..720/30 | 5 off, 300 off, 600 grace, 720 off
    | thread-destroyed | "RSM_DELAY_PROFILE_START_TIME","2026-01-03 GMT 10:10:00"
killed while it runs | 5 schedule 10:10:00 30 2; 640 unload; 650 again | 630 680 710
    | 5 off, 600 grace, 650 grace, 650 grace, 710 off
killed, started after its end | 5 schedule 10:10:00 30 2; 300 unload; 800 again; 801 stop rsm; 802 show-order | | 5 off
    | "text":null}
stopped before, while and after it runs
    | 0 again; 5 schedule 10:10:00 30 2; 300 stop rsm; 304 show-order; 310 again; 650 stop rsm; 654 show-order; 660 again;
      1000 stop rsm; 1004 show-order
    | 630 690 720 | 5 off, 310 off, 600 grace, 660 grace, 660 grace, 720 off
    | FORCEFULLY shutdown complete. | ordered 10:10:00 10:12:00 30 2 | FORCEFULLY shutdown complete.
    | ordered 10:10:00 10:12:00 30 2 | "\n Force Polling Thread shutdown complete." | "text":null}
at once, logger stopped first | 5 command ScheduleRSM GracePeriod=1; 70 stop logger; 71 show-order; 71 again; 72 stop rsm; 72 show-order
    | 65 | 5 grace, 65 off | ordered 10:00:05 10:01:05 60 1 | "text":null}
the first path stays | 1 start data-source b.xml; 2 show b.xml; 3 start data-source null | |
    | b.xml","result":0} | "text":null} | null","result":0}
a shorter record | 5 schedule 11:10:00 10000000 20; 6 schedule 10:10:00 30 2; 7 show-order; 10 unload; 10 again | 630..720/30
    | 5 off, 6 off, 10 off, 600 grace, 720 off | </RSMExecuteCommand>ommand>"}
)");

/// A schedule file as anybody may have left it.
const Table contents("ScheduleFile/Contents", __LINE__, R"(
one minute and a half | 0 ordered 10:01:00 10:02:30 30 7; 0 again; 1 show-order | 90..150/30 | 0 off, 60 grace, 150 off
    | ordered 10:01:00 10:02:30 30 7
one and a quarter | 0 ordered 10:01:00 10:02:15 30 7; 0 again | 90..150/30 | 0 off, 60 grace, 150 off
20 minutes 30 left | 0 ordered 09:50:00 10:20:30 30 7; 0 again | 30..1200/30 | 0 grace, 1200 off
less than a minute left | 0 ordered 09:50:00 10:00:30 30 7; 0 again | | 0 grace, 0 off
over | 0 ordered 09:50:00 10:00:00 30 7; 0 again | |
activity in it, its two minutes afterwards | 0 ordered 10:01:00 10:03:00 30 7; 0 start logger config.xml; 0 again; 80 audit opened; 170 audit closed
    | 90..270/30 | 0 off, 60 grace, 80 activity, 180 grace, 270 off
due while activity holds, its own grace afterwards
    | 0 ordered 10:01:30 10:03:30 20 7; 0 start logger config.xml; 0 start web-service; 0 again;
      5 connect 10 30; 40 audit opened; 200 audit closed
    | 35..95/30 115..615/20 | 0 off, 5 grace, 40 activity, 95 activity, 215 grace, 615 off
nothing but the root | 0 ordered <RSMExecuteCommand>; 0 again; 1 show-order | |
    | damaged: its RSMStartDate is of no use. Nothing comes of it | ordered <RSMExecuteCommand> | !not in correct
largest rate | 0 ordered 10:01:00 10:03:00 99999999999 7; 0 again | | 0 off, 60 grace, 60 off | RATE","2147483647"
words for a date | 0 ordered <RSMExecuteCommand><RSMStartDate>now</RSMStartDate><RSMStartTime>10:00:00</RSMStartTime><RSMEndDate>2026:03:01</RSMEndDate><RSMEndTime>10:01:00</RSMEndTime><PollingRate>30</PollingRate><GracePeriod>1</GracePeriod>;
                   0 again | 30 60 | 0 grace, 60 off
    | "level":250,"text":"\n The record in file = state/schedule.xml is damaged: its RSMStartDate is of no use. It is followed as far as it goes."
cut in its last value | 0 ordered <RSMExecuteCommand><RSMStartDate>2026:03:01</RSMStartDate><RSMStartTime>10:01:00</RSMStartTime><RSMEndDate>2026:03:01</RSMEndDate><RSMEndTime>10:02:00</RSMEndTime><PollingRate>30</PollingRate><GracePer;
                        0 again | 90 120 | 0 off, 60 grace, 120 off | its GracePeriod is of no use. It is followed
no opening tag | 0 ordered <RSMExecuteCommand><RSMEndDate>2026:03:01</RSMEndDate><RSMEndTime>10:03:00</RSMEndTime>30</PollingRate>;
               0 again | | | As polling rate is not greater than 0.
no start, no grace | 0 ordered <RSMExecuteCommand><RSMEndDate>2026:03:01</RSMEndDate><RSMEndTime>10:03:00</RSMEndTime><PollingRate>30</PollingRate>;
                     0 again | 30..180/30 | 0 grace, 180 off
no end | 0 ordered <RSMExecuteCommand><RSMStartDate>2026:03:01</RSMStartDate><PollingRate>30</PollingRate>; 0 again | |
ends before it starts | 0 ordered 10:03:00 10:01:00 30 7; 0 again | | 0 off, 180 grace, 180 off
    | "RSM_DELAY_PROFILE_GRACE_PERIOD","-2"
)");

/// What is no record is never overwritten nor deleted, but moved aside by an order.
const Table foreign("ScheduleFile/Foreign", __LINE__, R"(
STEP, stopped | 0 write state/schedule.xml "STEP<RSMExecuteCommand>"; 0 again; 1 stop rsm; 2 show-order | |
    | "level":250,"text":"\n What is in file = state/schedule.xml is no record that can be read. It is left alone,
    | "event":"stdout","text":"state/schedule.xml file is not in correct format."
    | "text":"STEP<RSMExecuteCommand>"}
STEP, ordered | 0 write state/schedule.xml "STEP<RSMExecuteCommand>"; 0 again; 5 schedule 10:10:00 30 2; 6 show-order;
                10 unload; 10 again; 730 stop rsm; 731 show-order; 731 show state/schedule.xml.unread | 630..720/30
    | 5 off, 10 off, 600 grace, 720 off | "level":250,"text":"\n What was in file = state/schedule.xml was no record that can be read. It was moved aside, and is now in state/schedule.xml.unread"
    | passed 2026:03:01 10:10:00 30 2 | ordered 10:10:00 10:12:00 30 2 | "text":null} | "text":"STEP<RSMExecuteCommand>"}
    | !Unable to put
)",
                    {" ", "<C>", "<RSM"});

const std::string kTaken = [] {
    std::string actions = "0 write state/schedule.xml.unread 1";
    for (const char number : std::string("23456789")) {
        actions += std::string("; 0 write state/schedule.xml.unread.") + number + " " + number;
    }
    return actions;
}();
const Table aside("ScheduleFile/Aside", __LINE__,
                  support::replaced(R"(
the configuration | 0 start data-source config.xml; 0 start rsm config.xml; 5 schedule 09:00:00 30 30; 6 show config.xml.unread | |
    | now in config.xml.unread" | "text":"<C>\n<TunnelMessags>
its names are taken | TAKEN; 0 remove state/schedule.xml.unread.3; 0 remove state/schedule.xml.unread.2; 0 write state/schedule.xml.unread.2/x 2;
    0 write state/schedule.xml a; 0 again; 5 schedule 09:00:00 30 30; 6 show state/schedule.xml.unread; 7 show state/schedule.xml.unread.3 | |
    | now in state/schedule.xml.unread.3" | "text":"1"} | "text":"a"}
all of them are | TAKEN; 0 write state/schedule.xml a; 0 again; 5 schedule 11:00:00 30 30; 6 show-order; 6 show state/schedule.xml.unread.9;
    7 remove state/schedule.xml.unread.9; 8 schedule 09:00:00 30 30; 9 show state/schedule.xml.unread.9; 9 show-order; 9 end | | 5 off
    | "level":250,"text":"\n What is in file = state/schedule.xml is no record that can be read, and cannot be moved aside: nothing was stored."
    | "level":250,"text":"\n Unable to put the schedule in file = state/schedule.xml" | passed 2026:03:01 11:00:00 30 30
    | "text":"a"} | "text":"9"} | now in state/schedule.xml.unread.9" | "text":"a"} | ordered 09:00:00 09:30:00 30 30
put there while it runs | 1 write state/schedule.xml a; 2 schedule 09:00:00 30 30; 3 show state/schedule.xml.unread;
    4 write state/schedule.xml b; 5 stop rsm; 6 show-order | | | now in state/schedule.xml.unread" | "text":"a"} | "text":"b"}
deleted while it runs | 1 remove state/schedule.xml; 2 schedule 09:00:00 30 30; 3 show-order | | | ordered 09:00:00 09:30:00 30 30
)",
                                    "TAKEN", kTaken));

const std::string kFile = "0 ordered <RSMExecuteCommand>";
const std::string kValues =
    "<RSMEndDate>2026:03:01</RSMEndDate><RSMEndTime>10:01:00</RSMEndTime><PollingRate>30</PollingRate>";
const Table oddContents[] = {
    {"ScheduleFile/Odd", __LINE__,
     "zero byte |" + kFile + '\0' + kValues + "; 0 again | | | its RSMStartDate is of no use."},
    {"ScheduleFile/Odd", __LINE__,
     "two megabytes before |" + kFile + "MEGABYTES" + kValues + "; 0 again | |"},
    {"ScheduleFile/Odd", __LINE__,
     "two megabytes behind |" + kFile + kValues + "MEGABYTES" + "; 0 again | 30 60 | 0 grace, 60 off"},
    {"ScheduleFile/Odd", __LINE__,
     "long value |" + kFile + "<RSMStartDate>" + std::string(5000, '1') + "</RSMStartDate>" + kValues +
         "; 0 again | 30 60 | 0 grace, 60 off"},
};

}  // namespace
