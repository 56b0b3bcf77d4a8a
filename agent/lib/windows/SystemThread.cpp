#include "lib/SystemThread.h"

#include <exception>

#include <pthread.h>

namespace agent::system {

bool canUnwind() {
    return false;
}

bool admitUnwinding(bool /*admitted*/) {
    return false;
}

void unwind(std::thread& /*thread*/) {
    std::terminate();
}

void beUnwound(const void* /*bottom*/) {
    std::terminate();
}

void nameThread(const std::string& name) {
    pthread_setname_np(pthread_self(), name.c_str());
}

void forgiveFrames(const void* /*bottom*/) {
    // No leak checker looks here.
}

}  // namespace agent::system
