#include "controller/PollingThread.h"

#include "platform/Guard.h"
#include "platform/Immortal.h"
#include "platform/Lock.h"
#include "platform/ScopeEnd.h"
#include "platform/agent/Logging.h"

#include <atomic>
#include <new>
#include <utility>

namespace {

constexpr unsigned int kThreadEndTimeout = 3000;  // milliseconds
constexpr unsigned int kThreadStackSize = 4096;

std::atomic<PollingThread::Number> lastNumber{0};
/// The thread that was started and has yet to begin. What the agent hands to a thread is the service agent,
/// so the number waits here; one thread at a time begins in this process.
struct Beginning {
    platform::Mutex lock;
    PollingThread::Number number = 0;
    void* argument = nullptr;
};
platform::Immortal<Beginning> beginning;

bool announce(PollingThread::Number number, void* argument) {
    const platform::Lock lock(beginning->lock);
    if (beginning->number != 0) {
        return false;
    }
    beginning->number = number;
    beginning->argument = argument;
    return true;
}

void withdraw(PollingThread::Number number) {
    const platform::Lock lock(beginning->lock);
    if (beginning->number == number) {
        beginning->number = 0;
    }
}

void logStopping() {
    KRXLog(level::kError,
           "\n generateThread --- The extension is being stopped, no Force Polling thread is started.");
}

}  // namespace

/// What is counted: the agent's object, with what the agent keeps in it.
struct PollingThread::Object {
    Object() = default;
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;
    ~Object() {
        if (constructed) {
            const platform::KeepThread keep;  // not to be unwound in a destructor
            platform::attempt([this] { KRXThreadDestroy(&thread); });
        }
    }
    KRXThread thread;
    bool constructed = false;
};

/// The number of the start under way. When the start is left without a thread to hold, however that comes,
/// nobody has the number any more.
struct PollingThread::Start {
    explicit Start(PollingThread& ofThread) : thread(ofThread) {}
    Start(const Start&) = delete;
    Start& operator=(const Start&) = delete;
    ~Start() {
        if (!held) {
            thread.forget(number);
        }
    }
    PollingThread& thread;
    const Number number = ++lastNumber;
    bool held = false;
};

int PollingThread::creationError() const noexcept {
    return threadMutex_.creationError() != 0 ? threadMutex_.creationError() : lock_.creationError();
}

std::int8_t PollingThread::createThread(KRXThreadEntry entry, void* argument,
                                        const std::function<void()>& alreadyThere) {
    switch (threadMutex_.wait()) {
        case platform::Mutex::Wait::Obtained:
            break;
        case platform::Mutex::Wait::Abandoned:
            forgetStart();
            KRXLog(level::kError, "\n The thread got ownership of an abandoned logging mutex.");
            return -1;
        default:
            return -1;
    }
    std::int8_t result = 0;
    bool released = true;
    Held refused;
    {
        // Given back also when this thread is unwound in one of the calls; not when it is ended without.
        const platform::ScopeEnd release([&] { released = threadMutex_.release(); });
        replaceLeaving();
        releaseFinished();  // it may have ended since the caller looked
        if (beginStart()) {
            const platform::ScopeEnd starting([this] { endStart(); });
            result = generateThread(entry, argument, refused);
        } else {
            KRXLog(level::kError, "\n createThread --- Thread was already created.");
            alreadyThere();
        }
    }
    if (!released) {
        KRXLog(level::kForce, "\n error while releasing logging mutex.");
    }
    if (refused != nullptr) {
        // Not before the mutex is given back: the thread may be carrying out an order itself, which
        // waits for it.
        KRXWaitForThread(&refused->thread, nullptr, kThreadEndTimeout);
        refused.reset();
        logStopping();
    }
    return result;
}

bool PollingThread::beginStart() {
    const platform::Lock lock(lock_);
    const bool none = object_ == nullptr && !starting_;
    starting_ |= none;
    return none;
}

void PollingThread::endStart() {
    const platform::Lock lock(lock_);
    starting_ = false;
}

std::int8_t PollingThread::generateThread(KRXThreadEntry entry, void* argument, Held& refusedThread) {
    const int priority = KRXThreadGetPriority(KRXThreadGetHandleSelf());
    Held object;
    try {
        object = std::make_shared<Object>();
    } catch (const std::bad_alloc&) {
        KRXLog(level::kForce, "new Failed in  generateThread of ZephanRSMSingleTon. \n");
        return -1;
    }
    if (KRXThreadConstruct(&object->thread) != 0) {
        return -1;
    }
    object->constructed = true;
    Start start(*this);
    // Before the start: the thread may run, and be over, before the agent's call returns.
    if (!announce(start.number, argument)) {
        KRXLog(
            level::kError,
            "\n generateThread --- A Force Polling thread that was started before has yet to begin, none is started.");
        return -1;
    }
    bool refused = false;
    {
        const platform::Lock lock(lock_);
        refused = closing_;
        if (!refused) {
            phase_ = Phase::Running;
            number_ = start.number;
        }
    }
    if (refused) {
        logStopping();
        return -1;
    }
    if (KRXThreadStart(&object->thread, "Data Polling", priority, 0, kThreadStackSize, entry, argument) !=
        0) {
        KRXLog(level::kForce, "\n generateThread --- Failed to start Force Polling thread.");
        return -1;
    }
    {
        const platform::Lock lock(lock_);
        start.held = !closing_;
        if (start.held) {
            object_ = std::move(object);
            return 0;
        }
    }
    refusedThread = std::move(object);
    return -1;
}

void PollingThread::replaceLeaving() {
    Held leaving;
    {
        const platform::Lock lock(lock_);
        if (phase_ == Phase::Leaving || phase_ == Phase::Ended) {
            leaving = object_;
        }
    }
    if (leaving != nullptr && KRXThreadIsActive(&leaving->thread) != 0) {
        // It has nothing left to do but to return.
        KRXWaitForThread(&leaving->thread, nullptr, kThreadEndTimeout);
        forget(leaving);
    }
}

void PollingThread::releaseFinished() {
    const Held object = held();
    if (object != nullptr && KRXThreadIsActive(&object->thread) == 0) {
        forget(object);
    }
}

void PollingThread::forget(const Held& object) {
    Held dropped;
    Number number = 0;
    {
        const platform::Lock lock(lock_);
        if (object_ != object) {
            return;
        }
        dropped = std::exchange(object_, nullptr);
        number = number_;
    }
    forget(number);
}

void PollingThread::forget(Number number) {
    {
        const platform::Lock lock(lock_);
        if (number_ == number) {
            phase_ = Phase::None;
            number_ = 0;
        }
    }
    withdraw(number);
}

PollingThread::Held PollingThread::held() const {
    const platform::Lock lock(lock_);
    return object_;
}

bool PollingThread::isHeld() const {
    const platform::Lock lock(lock_);
    return object_ != nullptr || (number_ != 0 && !closing_);
}

bool PollingThread::seesOrders() const {
    const platform::Lock lock(lock_);
    return object_ != nullptr && phase_ == Phase::Running;
}

bool PollingThread::isClosing() const {
    const platform::Lock lock(lock_);
    return closing_;
}

void PollingThread::forgetStart() {
    Number number = 0;
    {
        const platform::Lock lock(lock_);
        if (object_ == nullptr) {
            number = number_;
            starting_ = false;
        }
    }
    forget(number);
}

void PollingThread::stop() {
    Held object;
    Number number = 0;
    {
        const platform::Lock lock(lock_);
        closing_ = true;
        object = std::exchange(object_, nullptr);
        number = number_;
    }
    if (object == nullptr) {
        // Nothing to wait for. A number that nobody starts a thread for any more was left by a thread that
        // ended in its start.
        const auto starting = threadMutex_.tryWait();
        if (starting != platform::Mutex::Wait::Busy) {
            forgetStart();
        }
        if (starting == platform::Mutex::Wait::Obtained) {
            threadMutex_.release();
        }
        return;
    }
    // The thread polls on while it is waited for, and may end by itself.
    const bool ended = KRXWaitForThread(&object->thread, nullptr, kThreadEndTimeout) == 0;
    forget(number);
    object.reset();
    KRXLog(level::kForce, "%s",
           ended ? "\n Force Polling Thread shutdown complete."
                 : "\n Force Polling Thread FORCEFULLY shutdown complete.");
}

PollingThread::Number PollingThread::enter(const void* argument) {
    const platform::Lock lock(beginning->lock);
    return beginning->argument == argument ? std::exchange(beginning->number, 0) : 0;
}

bool PollingThread::has(Number number) const {
    const platform::Lock lock(lock_);
    return number != 0 && number == number_;
}

void PollingThread::setLeaving(Number number) {
    const platform::Lock lock(lock_);
    if (number != 0 && number == number_) {
        phase_ = Phase::Leaving;
    }
}

void PollingThread::setEnded(Number number) {
    const platform::Lock lock(lock_);
    if (number != 0 && number == number_) {
        phase_ = Phase::Ended;
    }
}
