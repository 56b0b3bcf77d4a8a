// A library that needs what the module needs, the C++ library and Expat, and does nothing.
#include <string>

#include <expat.h>

extern "C" __attribute__((visibility("default"))) const char* probe() {
    static const std::string version = std::string("Expat ") + ::XML_ExpatVersion();
    return version.c_str();
}
