// The resume file, and that neither it nor a schedule depends on the local time zone.
#include "Rows.h"

#include <gtest/gtest.h>

namespace {

const Table saved("ResumeFile/Saved", __LINE__, R"(
below 10 | 9 connect 5 60; 10 show-saved; 11 end | | 9 grace | saved 2026:03:01 10:00:09 60 05
a shorter record after a restart | 9 connect 1000 30; 40 connect 9 7; 71 show-saved; 72 end | 39 69 | 9 grace, 40 grace
    | saved 2026:03:01 10:01:09 7 09
5.5 minutes | 0 ordered 10:01:00 10:06:30 60 7; 0 again; 61 show-saved; 62 end | | 0 off, 60 grace
    | saved 2026:03:01 10:01:00 60 05
12.9 minutes | 0 ordered 10:01:00 10:13:54 60 7; 0 again; 61 show-saved; 62 end | | 0 off, 60 grace
    | saved 2026:03:01 10:01:00 60 12
stays after the end, goes at the next start | 5 connect 1 60; 70 show-saved; 70 stop logger; 80 again; 90 show-saved | 65
    | 5 grace, 65 off | saved 2026:03:01 10:00:05 60 01 | "text":null
untouched by a disconnect | 5 connect 3 30; 40 disconnect; 70 unload; 70 again | 35 65 100 130
    | 5 grace, 65 off, 70 grace, 130 off
a directory in its place | 0 write state/resume.xml/x y; 0 again; 0 start web-service; 5 connect 1 60 | 65 | 5 grace, 65 off
    | "level":250,"text":"Unable to save RSM state. Unable to retrive file. \n" | !correct format
)");

/// A resume file as anybody may have left it.
const Table contents("ResumeFile/Contents", __LINE__, R"(
240 s ago | 0 saved 2026:03:01 09:56:00 30 10; 0 again; 9 show-saved | 30..360/30 | 0 grace, 360 off
    | " Polling Duration = 6 min \n" | "Custom HVK Extension: RSM Extension startup complete.\n"
    | saved 2026:03:01 10:00:00 30 06
250 s ago | 0 saved 2026:03:01 09:55:50 30 10; 0 again | 30..300/30 | 0 grace, 300 off
599 s ago | 0 saved 2026:03:01 09:50:01 30 10; 0 again; 9 show-saved | | 0 grace, 0 off | saved 2026:03:01 09:50:01 30 10
600 s ago | 0 saved 2026:03:01 09:50:00 30 10; 0 again; 9 show-saved | | | "text":null
from the future | 0 saved 2030:01:01 00:00:00 30 01; 0 again | 30 60 | 0 grace, 60 off
blank in front | 0 write state/resume.xml " <ResumeRSM>"; 0 again; 9 show-saved | |
    | "level":250,"text":"\nstate\\resume.xml file is not in correct format."
    | "level":250,"text":"\n What is in file = state\\resume.xml is no record that can be read. It is left alone,
    | "text":" <ResumeRSM>"
another root, moved aside by a save | 0 saved <RSMExecuteCommand>; 0 again; 0 start web-service; 5 connect 1 60;
    7 show state/resume.xml.unread; 70 show-saved | 65 | 5 grace, 65 off | file is not in correct format.
    | "level":250,"text":"\n What was in file = state\\resume.xml was no record that can be read. It was moved aside, and is now in state\\resume.xml.unread"
    | "text":"<RSMExecuteCommand>"} | saved 2026:03:01 10:00:05 60 01
empty | 0 saved ""; 0 again; 9 show-saved | | | "text":"" | !correct format
nothing but the root | 0 saved <ResumeRSM>; 0 again; 9 show-saved | |
    | "level":250,"text":"\n The record in file = state\\resume.xml is damaged: its RSMStartDate is of no use. Nothing comes of it, and it is not kept."
    | "text":null
cut in its time | 0 saved <ResumeRSM><RSMStartDate>2026:03:01</RSMStartDate><RSMStartTime>09; 0 again; 9 show-saved | |
    | its RSMStartTime is of no use. Nothing comes of it, and it is not kept. | "text":null
rate 0 | 0 saved 2026:03:01 09:56:00 0 10; 0 again; 9 show-saved | | | its PollingRate is of no use. Nothing comes of it | "text":null
rate -5 | 0 saved 2026:03:01 09:56:00 -5 10; 0 again; 9 show-saved | | | its PollingRate is of no use. | "text":null
largest rate | 0 saved 2026:03:01 09:56:00 99999999999 10; 0 again | | 0 grace, 0 off | RATE","2147483647"
longest period | 0 saved 2026:03:01 09:56:00 60 99999999999; 0 again; 70 show-saved; 301 end | 60..300/60 | 0 grace
    | saved 2026:03:01 10:00:00 60 2147483643
negative period | 0 saved 2026:03:01 09:56:00 30 -10; 0 again; 9 show-saved | | | "text":null
a schedule, too: one thread for both | 0 saved 2026:03:01 09:58:00 30 05; 0 ordered 10:02:00 10:04:00 20 2; 0 again
    | 30..150/30 170..250/20 | 0 grace, 0 grace, 150 grace, 250 off | thread-start | SCHEDULING RSM FOR | !thread-destroyed
)");

const std::string kOnes(5000, '1');
const std::string kFile =
    "0 saved <ResumeRSM><RSMStartDate>2026:03:01</RSMStartDate><RSMStartTime>09:59:00</RSMStartTime>";
const std::string kGood = kFile + "<PollingRate>60</PollingRate><GracePeriod>3</GracePeriod>";
const Table oddContents[] = {
    {"ResumeFile/Odd", __LINE__,
     "no rate |" + kFile +
         "<GracePeriod>10</GracePeriod>; 0 again; 9 show-saved | | | its PollingRate is of no use. | \"text\":null"},
    {"ResumeFile/Odd", __LINE__,
     "zero byte |" + kFile + '\0' +
         "<PollingRate>60</PollingRate><GracePeriod>3</GracePeriod>; 0 again | | | its PollingRate is of no use."},
    {"ResumeFile/Odd", __LINE__, "long |" + kGood + kOnes + "; 0 again | 60 120 | 0 grace, 120 off"},
    {"ResumeFile/Odd", __LINE__,
     "out of reach |" + kFile + kOnes + "<GracePeriod>3</GracePeriod>; 0 again | |"},
    {"ResumeFile/Odd", __LINE__,
     "long value |" + kFile + "<PollingRate>60" + std::string(500, 'x') +
         "</PollingRate><GracePeriod>3</GracePeriod>; 0 again | 60 120 | 0 grace, 120 off"},
};

#if !defined(__SANITIZE_THREAD__)  // the same replay again and again
TEST(TimeZones, NoDifference) {
    // Winter and summer, and over both changes of the clock in the zone that has them.
    for (const std::string clock :
         {"2026-01-15T12:00:00Z", "2026-07-15T12:00:00Z", "2026-03-29T00:55:00Z", "2026-10-25T00:55:00Z"}) {
        const auto at = [&](int minutes) {
            const int minute = std::stoi(clock.substr(11, 2)) * 60 + std::stoi(clock.substr(14, 2)) + minutes;
            char text[64];
            std::snprintf(text, sizeof text, "%02d:%02d:00", minute / 60, minute % 60);
            return std::string(text);
        };
        std::string date = clock.substr(0, 10);
        date[4] = date[7] = ':';
        const std::string scenario =
            "clock " + clock + "\n" + kStart + "5 command ScheduleRSM RSMStartDate=" + date +
            " RSMStartTime=" + at(15) +
            " PollingRate=30 GracePeriod=5\n60 connect 10 30\n61 audit opened\n200 audit closed\n240 show "
            "state/resume.xml\n245 unload\n300 start data-source state/schedule.xml\n300 start rsm "
            "config.xml\n900 show state/schedule.xml\n1000 unload\n1020 start data-source "
            "state/schedule.xml\n1020 start rsm config.xml\n";
        const auto utc = replay(scenario);
        EXPECT_EQ(utc.polls(), "90..240/30 330..780/30 930..990/30 1050..1200/30") << utc.modes();
        EXPECT_EQ(utc.bytes(), replay(scenario, "IST-5:30").bytes());
        EXPECT_EQ(utc.bytes(), replay(scenario, "CET-1CEST,M3.5.0,M10.5.0/3").bytes());
    }
}
#endif

}  // namespace
