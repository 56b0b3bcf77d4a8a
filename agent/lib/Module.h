// The module, as an agent loads it.
#pragma once

#include "ZephanRSMLogger.h"
#include "platform/agent/Api.h"

#include <string>

namespace agent {

/// Loads the module and finds its exports, which are members under their names.
class KRX_API Module {
  public:
    /// Throws std::runtime_error naming the path, or the export that is missing.
    explicit Module(const std::string& path);
    Module(const Module&) = delete;
    Module& operator=(const Module&) = delete;
    /// As `unload`.
    ~Module() { unload(); }

    /// Gives the module back; nothing of it may be used any more.
    void unload();
    /// Whether that module is in the process.
    static bool isLoaded(const std::string& path);

// NOLINTNEXTLINE(bugprone-macro-parentheses): the name of a member
#define ZEPHAN_EXPORT(name) decltype(&::name) name = nullptr
    ZEPHAN_EXPORT(ZPRSMExtnStartup);
    ZEPHAN_EXPORT(ZPRSMExtnShutdown);
    ZEPHAN_EXPORT(ZPXRSMDSStartup);
    ZEPHAN_EXPORT(ZPXRSMDSShutdown);
    ZEPHAN_EXPORT(ZPXRSMDSGet);
    ZEPHAN_EXPORT(ZPXRSMDSSet);
    ZEPHAN_EXPORT(ZPXRSMDSExectue);
    ZEPHAN_EXPORT(ZPXRSMDSDestoryResponse);
    ZEPHAN_EXPORT(ZPXRSMDSDestroyPropList);
    ZEPHAN_EXPORT(ZPXRSMLoggerStatup);
    ZEPHAN_EXPORT(ZPXRSMLoggerShutdown);
    ZEPHAN_EXPORT(ZPXRSMLoggerLog);
    ZEPHAN_EXPORT(ZPXRSMLoggerAudit);
    ZEPHAN_EXPORT(ZPXRSMWSStartup);
    ZEPHAN_EXPORT(ZPXRSMWSShutdown);
    ZEPHAN_EXPORT(ZPXRSMWSCreateService);
    ZEPHAN_EXPORT(ZPXRSMWSDestroyService);
#undef ZEPHAN_EXPORT

  protected:
    const std::string& path() const {
        return path_;
    }
    /// The system's handle of it.
    void* handle() const {
        return handle_;
    }
    /// The module stays in the process.
    void leave() {
        handle_ = nullptr;
    }

  private:
    void findExports();

    std::string path_;
    void* handle_;
};

}  // namespace agent
