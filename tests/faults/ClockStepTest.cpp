// The wall clock is set while the module waits, polls, saves and resumes. Polls are counted and sleeps are
// slept, so only what is given as a date may follow the clock.
#include "rsm/Rows.h"

namespace {

using Steps = std::vector<std::string>;
const Steps kForward = {"60", "86400", "315360000", "10000000000"};
const Steps kBack = {"-60", "-86400", "-315360000", "-10000000000"};

Steps operator+(Steps first, const Steps& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

const Table running("ClockStep/RunningPeriodsKeepTheirPolls", __LINE__, R"(
grace | 5 connect 10 30; 100 clock-step STEP | 35..605/30 | 5 grace, 605 off
grace, each minute | 5 connect 2 20; 30 clock-step STEP; 50 clock-step STEP; 70 clock-step STEP | 25..125/20
    | 5 grace, 125 off
activity | 5 connect 2 15; 30 audit opened; 100 clock-step STEP; 200 audit closed | 20..305/15
    | 5 grace, 30 activity, 200 grace, 305 off
activity grace | 5 connect 2 15; 30 audit opened; 200 audit closed; 250 clock-step STEP | 20..305/15
    | 5 grace, 30 activity, 200 grace, 305 off
)",
                    Steps{"0"} + kForward + kBack);

const Table schedules("ClockStep/SchedulesFollow", __LINE__, R"(
waits | 5 schedule 10:10:00 30 2 | 630..720/30 | 5 off, 600 grace, 720 off
half way | 5 schedule 10:10:00 30 2; 101 clock-step 298 | 335..425/30 | 5 off, 305 grace, 425 off
back | 5 schedule 10:10:00 30 2; 100 clock-step -300 | 930..1020/30 | 5 off, 900 grace, 1020 off
there and back between two looks | 5 schedule 10:10:00 30 2; 101 clock-step 86400; 102 clock-step -86400 | 630..720/30
    | 5 off, 600 grace, 720 off
back while a connect runs | 5 connect 1 30; 6 schedule 10:01:00 20 1; 50 clock-step -60 | 35 65 140..180/20
    | 5 grace, 6 grace, 65 off, 120 grace, 180 off
stored, its start passed | 5 schedule 10:10:00 30 10; 100 unload; 100 clock-step 900; 100 again | 130..280/30
    | 5 off, 100 grace, 280 off
stored, passed | 5 schedule 10:10:00 30 10; 100 unload; 100 clock-step 2000; 100 again | | 5 off
stored, passed and ahead again | 5 schedule 10:10:00 30 2; 100 unload; 100 clock-step 2000; 100 again; 200 unload;
    200 clock-step -2000; 200 again | 630..720/30 | 5 off, 200 off, 600 grace, 720 off
)");

// The poll that finds a schedule due counts as its first.
const Table schedulesPassed("ClockStep/SchedulesFollow", __LINE__, R"(
past its start | 5 schedule 10:10:00 30 2; 101 clock-step STEP | 135..225/30 | 5 off, 105 grace, 225 off
while a connect runs | 5 connect 10 30; 6 schedule 10:10:00 20 1; 100 clock-step STEP | 35..125/30 145 165
    | 5 grace, 6 grace, 125 grace, 165 off
)",
                            {"600", "86400", "315360000", "10000000000"});

const Table schedulesAhead("ClockStep/SchedulesFollow", __LINE__, R"(
long before it | 5 schedule 10:10:00 30 2; 100 clock-step STEP; 5000 end | | 5 off
)",
                           {"-86400", "-315360000", "-10000000000"});

const Table saves("ClockStep/SavesAndResumes", __LINE__, R"(
before a save | 5 clock-step STEP; 5 connect 10 30; 126 unload; 126 again | 35..125/30 156..546/30
    | 5 grace, 126 grace, 546 off
)",
                  Steps{"0"} + kForward + kBack);

const Table resumesLater("ClockStep/SavesAndResumes", __LINE__, R"(
before a resume | 5 connect 10 30; 200 unload; 200 clock-step STEP; 200 again; 201 show state/resume.xml | 35..185/30
    | 5 grace | "path":"state/resume.xml","text":null
)",
                         {"600", "86400", "315360000", "10000000000"});

const Table resumesEarlier("ClockStep/SavesAndResumes", __LINE__, R"(
more than is left taken off | 5 connect 10 30; 200 unload; 201 clock-step 120; 201 again | 35..185/30 231..441/30
    | 5 grace, 201 grace, 441 off
)");

const Table resumesAhead("ClockStep/SavesAndResumes", __LINE__, R"(
back before a resume | 5 connect 10 30; 200 unload; 201 clock-step STEP; 201 again | 35..185/30 231..801/30
    | 5 grace, 201 grace, 801 off
)",
                         {"-300", "-86400", "-315360000", "-10000000000"});

}  // namespace
