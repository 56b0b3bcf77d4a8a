#include "sim/host/Module.h"

#include "sim/windows/ModuleCalls.h"

#include <stdexcept>

namespace sim {

Module::Module(const std::string& path) : agent::Module(path) {
    takeCallsOf(static_cast<HMODULE>(handle()));
}

Module::~Module() {
    leave();
}

void Module::drop() {
    unload();
    closeHandlesOfModule();
    if (isLoaded(path())) {
        throw std::runtime_error("module " + path() + " stays loaded");
    }
}

}  // namespace sim
