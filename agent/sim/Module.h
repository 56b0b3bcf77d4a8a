// The loaded module.
#pragma once

#include "ZephanRSMLogger.h"

#include <filesystem>

namespace sim {

/// Loads the module and finds its exports by name, as an agent does.
class Module final {
  public:
    /// Throws std::runtime_error naming the path, or the export that is missing.
    explicit Module(const std::filesystem::path& path);
    Module(const Module&) = delete;
    Module& operator=(const Module&) = delete;
    /// Leaves the module loaded: what it still owns at the end of the process is its business, and in its
    /// reach.
    ~Module();

    /// Takes the module out of the process. Throws std::runtime_error when it stays.
    void unload();

    decltype(&ZPRSMExtnStartup) rsmStartup = nullptr;
    decltype(&ZPRSMExtnShutdown) rsmShutdown = nullptr;
    decltype(&ZPXRSMDSStartup) dataSourceStartup = nullptr;
    decltype(&ZPXRSMDSShutdown) dataSourceShutdown = nullptr;
    decltype(&ZPXRSMDSGet) dataSourceGet = nullptr;
    decltype(&ZPXRSMDSSet) dataSourceSet = nullptr;
    decltype(&ZPXRSMDSExectue) dataSourceExecute = nullptr;
    decltype(&ZPXRSMDSDestoryResponse) dataSourceDestroyResponse = nullptr;
    decltype(&ZPXRSMDSDestroyPropList) dataSourceDestroyPropList = nullptr;
    decltype(&ZPXRSMLoggerStatup) loggerStartup = nullptr;
    decltype(&ZPXRSMLoggerShutdown) loggerShutdown = nullptr;
    decltype(&ZPXRSMLoggerLog) loggerLog = nullptr;
    decltype(&ZPXRSMLoggerAudit) loggerAudit = nullptr;
    decltype(&ZPXRSMWSStartup) webServiceStartup = nullptr;
    decltype(&ZPXRSMWSShutdown) webServiceShutdown = nullptr;
    decltype(&ZPXRSMWSCreateService) createService = nullptr;
    decltype(&ZPXRSMWSDestroyService) destroyService = nullptr;

  private:
    void findExports();

    std::filesystem::path path_;
    void* library_ = nullptr;
};

}  // namespace sim
