#include "lib/SystemLibrary.h"

#include <stdexcept>

#include <dlfcn.h>

namespace agent::system {

void* openLibrary(const std::string& path) {
    void* const library = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        throw std::runtime_error(std::string("cannot load the module: ") + ::dlerror());
    }
    return library;
}

void closeLibrary(void* library) {
    ::dlclose(library);
}

void* findSymbol(void* library, const char* name) {
    return ::dlsym(library, name);
}

bool isLoaded(const std::string& path) {
    void* const library = ::dlopen(path.c_str(), RTLD_LAZY | RTLD_NOLOAD);
    return library != nullptr && ::dlclose(library) == 0;
}

}  // namespace agent::system
