// How the operating system loads shared libraries.
#pragma once

#include <string>

namespace agent::system {

/// Throws std::runtime_error naming the path when it cannot be loaded.
void* openLibrary(const std::string& path);
void closeLibrary(void* library);
/// A symbol's address, or null.
void* findSymbol(void* library, const char* name);
/// Whether that library is in the process.
bool isLoaded(const std::string& path);

}  // namespace agent::system
