#include "Thread.h"

#include "Observer.h"
#include "Plugs.h"

#include <pthread.h>

namespace agent {

namespace {

thread_local Thread* currentThread = nullptr;

/// The longest thread name that the system takes, without the end mark.
constexpr std::size_t kSystemNameLength = 15;

}  // namespace

Thread* Thread::current() {
    return currentThread;
}

bool Thread::start(const std::string& name, int priority, KRXThreadEntry entry, void* argument) {
    if (entry == nullptr || entry_ != nullptr) {
        return false;
    }
    name_ = name;
    priority_ = priority;
    entry_ = entry;
    argument_ = argument;
    return launch();
}

void Thread::sleep(std::chrono::milliseconds time) {
    if (sleepOrStop(time)) {
        std::longjmp(wayOut_,
                     1);  // NOLINT(cert-err52-cpp,modernize-avoid-setjmp-longjmp): see the class comment
    }
}

void Thread::run() {
    currentThread = this;
    pthread_setname_np(pthread_self(), name_.substr(0, kSystemNameLength).c_str());
    if (setjmp(wayOut_) == 0) {  // NOLINT(cert-err52-cpp,modernize-avoid-setjmp-longjmp)
        result_ = entry_(argument_);
        completed_ = true;
        observer().onThreadEnd(result_);
    }
}

}  // namespace agent
