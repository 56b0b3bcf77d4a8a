#include "lib/Module.h"

#include "lib/SystemLibrary.h"

#include <stdexcept>
#include <type_traits>

namespace agent {

Module::Module(const std::string& path) : path_(path), handle_(system::openLibrary(path)) {
    try {
        findExports();
    } catch (...) {
        unload();
        throw;
    }
}

void Module::unload() {
    if (handle_ != nullptr) {
        system::closeLibrary(handle_);
        handle_ = nullptr;
    }
}

bool Module::isLoaded(const std::string& path) {
    return system::isLoaded(path);
}

void Module::findExports() {
    const auto find = [this](auto& function, const char* name) {
        void* const address = system::findSymbol(handle_, name);
        if (address == nullptr) {
            throw std::runtime_error("module " + path_ + " does not export " + name);
        }
        function = reinterpret_cast<std::remove_reference_t<decltype(function)>>(address);
    };
#define FIND(name) find(name, #name)
    FIND(ZPRSMExtnStartup);
    FIND(ZPRSMExtnShutdown);
    FIND(ZPXRSMDSStartup);
    FIND(ZPXRSMDSShutdown);
    FIND(ZPXRSMDSGet);
    FIND(ZPXRSMDSSet);
    FIND(ZPXRSMDSExectue);
    FIND(ZPXRSMDSDestoryResponse);
    FIND(ZPXRSMDSDestroyPropList);
    FIND(ZPXRSMLoggerStatup);
    FIND(ZPXRSMLoggerShutdown);
    FIND(ZPXRSMLoggerLog);
    FIND(ZPXRSMLoggerAudit);
    FIND(ZPXRSMWSStartup);
    FIND(ZPXRSMWSShutdown);
    FIND(ZPXRSMWSCreateService);
    FIND(ZPXRSMWSDestroyService);
#undef FIND
}

}  // namespace agent
