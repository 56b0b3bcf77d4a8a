#include "platform/agent/Threads.h"

#include "lib/Observer.h"
#include "lib/Plugs.h"
#include "lib/Runtime.h"
#include "lib/Thread.h"

#include <new>
#include <string>

namespace {

/// The priority that host threads have.
constexpr int kHostPriority = 0;

/// Stands for every host thread as a handle.
char hostThread = 0;

agent::Thread* threadOf(const KRXThread* thread) {
    return thread == nullptr ? nullptr : static_cast<agent::Thread*>(thread->state);
}

}  // namespace

KRXThreadHandle KRXThreadGetHandleSelf() {
    agent::Thread* self = agent::Thread::current();
    return self == nullptr ? static_cast<KRXThreadHandle>(&hostThread) : self;
}

int KRXThreadGetPriority(KRXThreadHandle thread) {
    return thread == nullptr || thread == &hostThread ? kHostPriority
                                                      : static_cast<agent::Thread*>(thread)->priority();
}

std::int8_t KRXThreadConstruct(KRXThread* thread) {
    if (thread == nullptr) {
        return -1;
    }
    thread->state = nullptr;
    try {
        thread->state = agent::runtime().construct(agent::Thread::Kind::module);
    } catch (const std::bad_alloc&) {
        return -1;
    }
    return thread->state == nullptr ? std::int8_t{-1} : std::int8_t{0};
}

std::int8_t KRXThreadStart(KRXThread* thread, const char* name, int priority, int /*flags*/,
                           unsigned int /*stackSize*/, KRXThreadEntry entry, void* argument) {
    agent::Thread* state = threadOf(thread);
    if (state == nullptr) {
        return -1;
    }
    try {
        const std::string threadName = name == nullptr ? "" : name;
        const bool started = entry != nullptr && state->prepare(threadName, priority, [entry, argument] {
            return entry(argument);
        }) && agent::runtime().start(*state);
        const std::int8_t result = started ? 0 : -1;
        agent::observer().onThreadStart(threadName, result);
        return result;
    } catch (const std::bad_alloc&) {
        return -1;
    }
}

int KRXThreadIsActive(KRXThread* thread) {
    const agent::Thread* state = threadOf(thread);
    return state != nullptr && state->isActive() ? 1 : 0;
}

std::int8_t KRXWaitForThread(KRXThread* thread, int* result, unsigned int milliseconds) {
    const agent::AgentCall call("KRXWaitForThread");
    const agent::Thread* state = threadOf(thread);
    if (state == nullptr || !agent::Thread::block(std::chrono::milliseconds(milliseconds),
                                                  [state] { return !state->isActive(); })) {
        return -1;
    }
    if (result != nullptr) {
        *result = state->result();
    }
    return 0;
}

void KRXThreadDestroy(KRXThread* thread) {
    agent::Thread* state = threadOf(thread);
    if (state == nullptr) {
        return;
    }
    const agent::AgentCall call("KRXThreadDestroy");
    if (state->isActive()) {
        agent::runtime().end(*state, agent::settings().threadDestroy);
        if (!state->completed()) {
            agent::observer().onThreadDestroyed(state->name());
        }
    }
    agent::runtime().release(*state);
    thread->state = nullptr;
}

void KRXThreadSleep(unsigned int milliseconds) {
    const agent::AgentCall call("KRXThreadSleep", true);
    agent::observer().onSleep(milliseconds);
    agent::Thread::block(
        std::chrono::milliseconds(milliseconds), [] { return false; }, true);
}
