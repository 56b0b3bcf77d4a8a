// The built library as an agent has it: loaded, its exports found by their names.
#pragma once

#include "Rows.h"
#include "lib/Module.h"
#include "platform/agent/Logging.h"
#include "sim/ServiceCall.h"

class Library final : public agent::Module {
  public:
    Library() : Module(ZEPHAN_MODULE) {}

    static bool isLoaded() { return Module::isLoaded(ZEPHAN_MODULE); }
};
#define CALL(library, name) (*(library).name)

/// The four families by their numbers, in a workspace that becomes the working directory.
class Families final {
  public:
    enum Family : int { dataSource, logger, rsm, webService };

    Families(const Library& library, ZPServiceAgent* agent, const support::Workspace& workspace)
        : library_(library), agent_(agent) {
        std::filesystem::current_path(workspace.path(""));
        workspace.write("config.xml", kConfiguration);
    }

    int start(int family, const std::string& scheduleFile = "state/schedule.xml") {
        switch (family) {
            case dataSource:
                return CALL(library_, ZPXRSMDSStartup)(&handle_, scheduleFile.c_str());
            case logger:
                if (CALL(library_, ZPXRSMLoggerStatup)("config.xml") != 0) {
                    return -1;
                }
                KRXLogSetFunc(&CALL(library_, ZPXRSMLoggerLog));
                KRXLogSetAuditFunc(&CALL(library_, ZPXRSMLoggerAudit));
                return 0;
            case rsm:
                return CALL(library_, ZPRSMExtnStartup)(&handle_, agent_, "config.xml");
            default:
                return CALL(library_, ZPXRSMWSStartup)(&handle_, agent_);
        }
    }
    int stop(int family) {
        switch (family) {
            case dataSource:
                return CALL(library_, ZPXRSMDSShutdown)();
            case logger:
                return CALL(library_, ZPXRSMLoggerShutdown)();
            case rsm:
                return CALL(library_, ZPRSMExtnShutdown)(handle_);
            default:
                return CALL(library_, ZPXRSMWSShutdown)(handle_);
        }
    }
    ZPService* createService() {
        ZPService* service = nullptr;
        CALL(library_, ZPXRSMWSCreateService)(handle_, &service);
        return service;
    }
    void destroyService(ZPService* service) { CALL(library_, ZPXRSMWSDestroyService)(handle_, service); }
    static int connect(ZPService* service, const std::string& minutes, const std::string& rate) {
        return sim::callService(*service, "connect", {{"pollDuration", minutes}, {"pollingRate", rate}})
            .result;
    }

  private:
    const Library& library_;
    ZPServiceAgent* agent_;
    void* handle_ = nullptr;  // any one will do for a stop
};
