// Force polling from a connect call to its end: how often, how long, what the enterprise hears.
#include "Rows.h"

namespace {

const Table periods("ForcePolling", __LINE__, R"(
30 seconds | 5 connect 10 30 | 35..605/30 | 5 grace, 605 off
    | "thread-start","name":"Data Polling","result":0 | "thread-end","result":0
a minute holds one interval | 5 connect 10 45 | 50..455/45 | 5 grace, 455 off
a minute holds exactly one | 5 connect 2 60 | 65 125 | 5 grace, 125 off
a minute holds none | 5 connect 10 90 | | 5 grace, 5 off
connect before the last poll | 5 connect 10 30; 100 disconnect; 110 connect 1 20 | 35..125/30 145..185/20
    | 5 grace, 110 grace, 185 off
second connect | 5 connect 10 30; 100 connect 5 20 | 35..125/30 145..425/20 | 5 grace, 100 grace, 425 off
    | "level":50,"text":"\n createThread --- Thread was already created." | "result":0,"stage"
late and shorter | 5 connect 10 30; 590 connect 1 30 | 35..665/30 | 5 grace, 590 grace, 665 off
the same again before the last poll | 5 connect 10 30; 590 connect 10 30 | 35..1205/30
    | 5 grace, 590 grace, 1205 off
at and after the end | 5 connect 1 30; 65 connect 1 30; 200 connect 1 30 | 35..125/30 230 260
    | 5 grace, 65 grace, 125 off, 200 grace, 260 off
asset registered while the thread waits
    | 5 asset absent; 5 schedule 10:02:00 30 1; 60 asset present | 150 180 | 120 grace, 180 off
asset gone while the thread waits
    | 5 schedule 10:02:00 30 1; 60 asset absent; 130 asset present | 150 180 | 5 off, 180 off
)");

}  // namespace
