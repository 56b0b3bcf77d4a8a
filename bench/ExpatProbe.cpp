// A library that needs what the module needs, the C++ library and Expat, and does nothing: loaded by the
// start-up benchmark in a process of its own.
#include <string>

#include <expat.h>

extern "C" __attribute__((visibility("default"))) const char* probe(const std::string& name) {
    return name.empty() ? nullptr : ::XML_ExpatVersion();
}
