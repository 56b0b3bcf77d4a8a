#include "lib/SystemLibrary.h"

#include <stdexcept>
#include <system_error>
#include <windows.h>

namespace agent::system {

void* openLibrary(const std::string& path) {
    const HMODULE library = ::LoadLibraryA(path.c_str());
    if (library == nullptr) {
        throw std::runtime_error("cannot load the module: " + path + ": " +
                                 std::system_category().message(static_cast<int>(::GetLastError())));
    }
    return library;
}

void closeLibrary(void* library) {
    ::FreeLibrary(static_cast<HMODULE>(library));
}

void* findSymbol(void* library, const char* name) {
    return reinterpret_cast<void*>(::GetProcAddress(static_cast<HMODULE>(library), name));
}

bool isLoaded(const std::string& path) {
    return ::GetModuleHandleA(path.c_str()) != nullptr;
}

}  // namespace agent::system
