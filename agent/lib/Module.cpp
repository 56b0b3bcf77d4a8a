#include "lib/Module.h"

#include <stdexcept>
#include <type_traits>

#include <dlfcn.h>

namespace agent {

Module::Module(const std::string& path)
    : path_(path), handle_(::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
    if (handle_ == nullptr) {
        throw std::runtime_error(std::string("cannot load the module: ") + ::dlerror());
    }
    try {
        findExports();
    } catch (...) {
        unload();
        throw;
    }
}

void Module::unload() {
    if (handle_ != nullptr) {
        ::dlclose(handle_);
        handle_ = nullptr;
    }
}

bool Module::isLoaded(const std::string& path) {
    void* const handle = ::dlopen(path.c_str(), RTLD_LAZY | RTLD_NOLOAD);
    return handle != nullptr && ::dlclose(handle) == 0;
}

void Module::findExports() {
    const auto find = [this](auto& function, const char* name) {
        void* const address = ::dlsym(handle_, name);
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
