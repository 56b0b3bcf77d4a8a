// The built library as an agent has it: loaded, its exports found by their names.
#pragma once

#include "Rows.h"
#include "lib/Module.h"
#include "platform/agent/Logging.h"
#include "sim/host/ServiceCall.h"

class Library final : public agent::Module {
  public:
    Library() : Module(ZEPHAN_MODULE) {}

    static bool isLoaded() { return Module::isLoaded(ZEPHAN_MODULE); }
};

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
                return library_.ZPXRSMDSStartup(&handle_, scheduleFile.c_str());
            case logger:
                if (library_.ZPXRSMLoggerStatup("config.xml") != 0) {
                    return -1;
                }
                KRXLogSetFunc(library_.ZPXRSMLoggerLog);
                KRXLogSetAuditFunc(library_.ZPXRSMLoggerAudit);
                return 0;
            case rsm:
                return library_.ZPRSMExtnStartup(&handle_, agent_, "config.xml");
            default:
                return library_.ZPXRSMWSStartup(&handle_, agent_);
        }
    }
    int stop(int family) {
        switch (family) {
            case dataSource:
                return library_.ZPXRSMDSShutdown();
            case logger:
                return library_.ZPXRSMLoggerShutdown();
            case rsm:
                return library_.ZPRSMExtnShutdown(handle_);
            default:
                return library_.ZPXRSMWSShutdown(handle_);
        }
    }
    ZPService* createService() {
        ZPService* service = nullptr;
        library_.ZPXRSMWSCreateService(handle_, &service);
        return service;
    }
    void destroyService(ZPService* service) { library_.ZPXRSMWSDestroyService(handle_, service); }
    static int connect(ZPService* service, const std::string& minutes, const std::string& rate) {
        return sim::callService(*service, "connect", {{"pollDuration", minutes}, {"pollingRate", rate}})
            .result;
    }

  private:
    const Library& library_;
    ZPServiceAgent* agent_;
    void* handle_ = nullptr;  // any one will do for a stop
};
