// The module's whole life in the six lines that the README shows, to be run where zephan-config.xml lies beside the
// directories log and state: without it the start of RSM, and so the program, ends with -1. Linking loads the library.
// An agent that loads it with dlopen, looks at the results and uses all families is minimal-agent.cpp.
#include "ZephanRSMLogger.h"
#include "lib/AgentHost.h"

int main() {
    agent::AgentHost agent;  // the stand-in for your agent
    void* rsm = nullptr;
    ZPXRSMDSStartup(nullptr, "schedule.xml");                            // start: the stored schedule
    ZPRSMExtnStartup(&rsm, agent.serviceAgent(), "zephan-config.xml");   // start: RSM with its settings
    ZPXRSMDSExectue(nullptr, nullptr, "ScheduleRSM", nullptr, nullptr);  // connect: a poll a minute
    return ZPRSMExtnShutdown(rsm);                                       // stop, in 3 seconds at most
}
