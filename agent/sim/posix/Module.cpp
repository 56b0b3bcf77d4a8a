#include "sim/host/Module.h"

#include "sim/posix/ModuleFiles.h"
#include "sim/posix/ModuleImage.h"
#include "sim/time/ProcessTime.h"

#include <stdexcept>

namespace sim {

Module::Module(const std::string& path) : agent::Module(path) {
    const ModuleImage image(handle());
    setModuleImage(image.begin(), image.end());
}

Module::~Module() {
    setModuleImage(0, 0);
    leave();
}

void Module::drop() {
    setModuleImage(0, 0);
    ModuleImage(handle()).keepData();
    unload();
    closeOpened();
    if (isLoaded(path())) {
        throw std::runtime_error("module " + path() + " stays loaded");
    }
}

}  // namespace sim
