#include "Module.h"

#include "ModuleFiles.h"
#include "ModuleImage.h"
#include "ProcessTime.h"

#include <stdexcept>
#include <string>
#include <type_traits>

#include <dlfcn.h>

namespace sim {

Module::Module(const std::filesystem::path& path) : path_(path) {
    library_ = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library_ == nullptr) {
        throw std::runtime_error(std::string("cannot load the module: ") + ::dlerror());
    }
    try {
        findExports();
        const ModuleImage image(library_);
        setModuleImage(image.begin(), image.end());
    } catch (...) {
        ::dlclose(library_);
        throw;
    }
}

Module::~Module() {
    setModuleImage(0, 0);
}

void Module::unload() {
    setModuleImage(0, 0);
    ModuleImage(library_).keepData();
    ::dlclose(library_);
    closeOpened();
    library_ = nullptr;
    if (void* left = ::dlopen(path_.c_str(), RTLD_LAZY | RTLD_NOLOAD)) {
        ::dlclose(left);
        throw std::runtime_error("module " + path_.string() + " stays loaded");
    }
}

void Module::findExports() {
    const auto find = [this](auto& function, const char* name) {
        void* address = ::dlsym(library_, name);
        if (address == nullptr) {
            throw std::runtime_error("module " + path_.string() + " does not export " + name);
        }
        function = reinterpret_cast<std::remove_reference_t<decltype(function)>>(address);
    };
    find(rsmStartup, "ZPRSMExtnStartup");
    find(rsmShutdown, "ZPRSMExtnShutdown");
    find(dataSourceStartup, "ZPXRSMDSStartup");
    find(dataSourceShutdown, "ZPXRSMDSShutdown");
    find(dataSourceGet, "ZPXRSMDSGet");
    find(dataSourceSet, "ZPXRSMDSSet");
    find(dataSourceExecute, "ZPXRSMDSExectue");
    find(dataSourceDestroyResponse, "ZPXRSMDSDestoryResponse");
    find(dataSourceDestroyPropList, "ZPXRSMDSDestroyPropList");
    find(loggerStartup, "ZPXRSMLoggerStatup");
    find(loggerShutdown, "ZPXRSMLoggerShutdown");
    find(loggerLog, "ZPXRSMLoggerLog");
    find(loggerAudit, "ZPXRSMLoggerAudit");
    find(webServiceStartup, "ZPXRSMWSStartup");
    find(webServiceShutdown, "ZPXRSMWSShutdown");
    find(createService, "ZPXRSMWSCreateService");
    find(destroyService, "ZPXRSMWSDestroyService");
}

}  // namespace sim
