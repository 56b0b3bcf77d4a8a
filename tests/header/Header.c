/* The public header as its users compile it: this file as C99, and, through HeaderCpp17.cpp, as C++17. Each function is
 * assigned to a pointer of the type that agents call it by, and is linked. */
#include "ZephanRSMLogger.h"

#include <stddef.h>
#include <stdio.h>

typedef struct {
    int8_t (*rsmStartup)(void**, ZPServiceAgent*, const char*);
    int8_t (*rsmShutdown)(void*);
    int8_t (*dataSourceStartup)(void**, const char*);
    int8_t (*dataSourceShutdown)(void);
    int32_t (*get)(void);
    int32_t (*set)(void);
    int32_t (*execute)(void*, void*, const char*, const PropList*, PropList**);
    int8_t (*destroyResponse)(void);
    int8_t (*destroyPropList)(void*, void*, PropList*);
    int8_t (*loggerStartup)(const char*);
    int8_t (*loggerShutdown)(void);
    int8_t (*log)(uint8_t, const char*);
    int8_t (*audit)(const char*);
    int8_t (*webServiceStartup)(void**, ZPServiceAgent*);
    int8_t (*webServiceShutdown)(void*);
    int8_t (*createService)(void*, ZPService**);
    int8_t (*destroyService)(void*, ZPService*);
} Functions;

static int check(int holds, const char* what) {
    if (!holds) {
        printf("does not hold: %s\n", what);
    }
    return holds ? 0 : 1;
}
#define CHECK(condition) failures += check((condition), #condition)

int main(void) {
    const Functions functions = {ZPRSMExtnStartup,
                                 ZPRSMExtnShutdown,
                                 ZPXRSMDSStartup,
                                 ZPXRSMDSShutdown,
                                 ZPXRSMDSGet,
                                 ZPXRSMDSSet,
                                 ZPXRSMDSExectue,
                                 ZPXRSMDSDestoryResponse,
                                 ZPXRSMDSDestroyPropList,
                                 ZPXRSMLoggerStatup,
                                 ZPXRSMLoggerShutdown,
                                 ZPXRSMLoggerLog,
                                 ZPXRSMLoggerAudit,
                                 ZPXRSMWSStartup,
                                 ZPXRSMWSShutdown,
                                 ZPXRSMWSCreateService,
                                 ZPXRSMWSDestroyService};
    PropList* answer = NULL;
    int failures = 0;
    char version[32];

    CHECK(functions.get() == 2 && functions.set() == 2);
    CHECK(functions.destroyResponse() == -1);
    CHECK(functions.execute(NULL, NULL, "ExitRSM", NULL, &answer) == 1); /* the data source was not started */
    CHECK(answer == NULL);
    CHECK(functions.log(ZP_LEVEL_INFO, NULL) == -1);

    CHECK(sizeof(Prop) == 4 * sizeof(char*) && offsetof(Prop, value) == 3 * sizeof(char*));
    CHECK(offsetof(PropList, properties) == 0 && offsetof(PropList, count) == sizeof(void*));
    CHECK(ZP_LEVEL_TRACE == 20 && ZP_LEVEL_INFO == 30 && ZP_LEVEL_WARN == 40 && ZP_LEVEL_ERROR == 50);
    CHECK(ZP_LEVEL_FORCE == 250 && ZP_LEVEL_AUDIT == 254);

    snprintf(version, sizeof version, "%d.%d.%d", ZEPHAN_RSM_LOGGER_VERSION_MAJOR,
             ZEPHAN_RSM_LOGGER_VERSION_MINOR, ZEPHAN_RSM_LOGGER_VERSION_PATCH);
    printf("%s\n", version);
    return failures == 0 ? 0 : 1;
}
