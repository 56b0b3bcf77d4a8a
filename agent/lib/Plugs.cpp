#include "lib/Plugs.h"

#include "lib/FreeRuntime.h"
#include "lib/Observer.h"

#include <atomic>

namespace agent {

namespace {

std::atomic<Observer*> currentObserver = nullptr;
std::atomic<Runtime*> currentRuntime = nullptr;

}  // namespace

Observer& observer() {
    static Observer quiet;
    Observer* plugged = currentObserver;
    return plugged == nullptr ? quiet : *plugged;
}

Runtime& runtime() {
    static auto& free = *new FreeRuntime;  // Threads may go on to the end of the process.
    Runtime* plugged = currentRuntime;
    return plugged == nullptr ? free : *plugged;
}

Settings& settings() {
    static Settings all;
    return all;
}

void plugIn(Observer* observer, Runtime* runtime) {
    currentObserver = observer;
    currentRuntime = runtime;
}

}  // namespace agent
