/* The smallest host in C: starts the file logger, writes to it, orders RSM for a time to come and reads the
 * answer. It is linked with the library; nothing but the public header is needed. What it lacks to be an agent
 * is the service agent, which the agent's own libraries make (see minimal-agent.cpp): nothing is polled
 * without one. */
#include "ZephanRSMLogger.h"

#include <stdio.h>
#include <string.h>

/* Says what went wrong and answers 1, or 0 when nothing did. */
static int failed(const char* call, int result) {
    if (result == 0) {
        return 0;
    }
    fprintf(stderr, "%s answered %d; the reason is in the agent's log\n", call, result);
    return 1;
}

/* A command with its answer, which goes back for release. */
static int orderRSM(void) {
    char dateName[] = "RSMStartDate";
    char date[] = "2099:12:31";
    char timeName[] = "RSMStartTime";
    char time[] = "09:00:00";
    Prop properties[2];
    PropList order;
    PropList* answer = NULL;
    int failures;
    int i;

    memset(properties, 0, sizeof properties);
    properties[0].name = dateName;
    properties[0].value = date;
    properties[1].name = timeName;
    properties[1].value = time;
    order.properties = properties;
    order.count = 2;
    failures = failed("ZPXRSMDSExectue", ZPXRSMDSExectue(NULL, NULL, "ScheduleRSM", &order, &answer));
    if (answer != NULL) {
        for (i = 0; i < answer->count; ++i) {
            const Prop* const property = &answer->properties[i];
            printf("%s: %s\n", property->name, property->value);
        }
        failures += failed("ZPXRSMDSDestroyPropList", ZPXRSMDSDestroyPropList(NULL, NULL, answer));
    }
    return failures;
}

int main(int argc, char** argv) {
    void* dataSource = NULL;
    int failures = 0;

    if (argc != 3) {
        fprintf(stderr, "usage: %s CONFIGURATION SCHEDULE-FILE\n", argv[0]);
        return 2;
    }
    failures += failed("ZPXRSMDSStartup", ZPXRSMDSStartup(&dataSource, argv[2]));
    failures += failed("ZPXRSMLoggerStatup", ZPXRSMLoggerStatup(argv[1]));
    if (failures == 0) {
        failures += failed("ZPXRSMLoggerLog", ZPXRSMLoggerLog(ZP_LEVEL_INFO, "A log message\n"));
        failures += failed("ZPXRSMLoggerAudit", ZPXRSMLoggerAudit("An audit message\n"));
        failures += orderRSM();
    }
    failures += failed("ZPXRSMDSShutdown", ZPXRSMDSShutdown());
    failures += failed("ZPXRSMLoggerShutdown", ZPXRSMLoggerShutdown());
    return failures == 0 ? 0 : 1;
}
