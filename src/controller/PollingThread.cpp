#include "controller/PollingThread.h"

#include "platform/agent/Logging.h"
#include "platform/portable/Guard.h"
#include "platform/portable/Lock.h"
#include "platform/portable/ScopeGuard.h"

#include <atomic>
#include <new>
#include <utility>

namespace {

constexpr unsigned int kThreadEndTimeout = 3000;  // milliseconds
constexpr unsigned int kThreadStackSize = 4096;

std::atomic<PollingThread::Number> lastNumber{0};
/// Of the thread that was started and has yet to begin. What the agent hands to a thread is the service agent,
/// so the number waits here; one thread at a time begins in this process.
std::atomic<PollingThread::Number> beginning{0};

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
    const Number number = ++lastNumber;
    KRXThread thread;
    bool constructed = false;
};

PollingThread::Creation PollingThread::createThread(KRXThreadEntry entry, void* argument) {
    switch (threadMutex_.wait()) {
        case platform::Mutex::Wait::Obtained:
            break;
        case platform::Mutex::Wait::Abandoned:
            forgetStart();
            KRXLog(level::kError, "\n The thread got ownership of an abandoned logging mutex.");
            return Creation::Failed;
        default:
            return Creation::Failed;
    }
    Creation result = Creation::Failed;
    bool released = true;
    Held ended;
    {
        // Given back also when this thread is unwound in one of the calls; not when it is ended without.
        const platform::ScopeGuard release([&] { released = threadMutex_.release(); });
        releaseFinished();  // it may have ended since the caller looked
        result = generateThread(entry, argument, ended);
    }
    if (!released) {
        KRXLog(level::kForce, "\n error while releasing logging mutex.");
    }
    if (ended != nullptr) {
        // Not before the mutex is given back: the thread may be carrying out an order itself, which
        // waits for it.
        KRXWaitForThread(&ended->thread, nullptr, kThreadEndTimeout);
        ended.reset();
    }
    if (result == Creation::Stopping) {
        KRXLog(level::kError,
               "\n generateThread --- The extension is being stopped, no Force Polling thread is started.");
    } else if (result == Creation::AlreadyThere) {
        KRXLog(level::kError, "\n createThread --- Thread was already created.");
    }
    return result;
}

PollingThread::Creation PollingThread::generateThread(KRXThreadEntry entry, void* argument, Held& ended) {
    {
        const platform::Lock lock(lock_);
        if (closing_) {
            return Creation::Stopping;
        }
        if (object_ != nullptr || starting_) {  // a start under way, in which this order came up
            return Creation::AlreadyThere;
        }
        starting_ = true;
    }
    bool started = false;
    const platform::ScopeGuard over([&] {  // however the start is left
        if (!started) {
            forgetStart();
        }
    });
    const int priority = KRXThreadGetPriority(KRXThreadGetHandleSelf());
    Held object;
    try {
        object = std::make_shared<Object>();
    } catch (const std::bad_alloc&) {
        KRXLog(level::kForce, "new Failed in  generateThread of ZephanRSMSingleTon. \n");
        return Creation::Failed;
    }
    if (KRXThreadConstruct(&object->thread) != 0) {
        return Creation::Failed;
    }
    object->constructed = true;
    {
        const platform::Lock lock(lock_);
        object_ = object;
    }
    // Before the start: the thread may run, and be over, before the agent's call returns.
    if (Number none = 0; !beginning.compare_exchange_strong(none, object->number)) {
        KRXLog(
            level::kError,
            "\n generateThread --- A Force Polling thread that was started before has yet to begin, none is started.");
        return Creation::Failed;
    }
    if (KRXThreadStart(&object->thread, kName, priority, 0, kThreadStackSize, entry, argument) != 0) {
        KRXLog(level::kForce, "\n generateThread --- Failed to start Force Polling thread.");
        return Creation::Failed;
    }
    const platform::Lock lock(lock_);
    started = !closing_;
    starting_ = closing_;
    ended = started ? nullptr : object;
    return started ? Creation::Started : Creation::Stopping;
}

void PollingThread::releaseFinished() {
    Held object;
    bool leaves = false;
    {
        const platform::Lock lock(lock_);
        if (!starting_ && !closing_) {
            object = object_;
        }
        leaves = leaving_;
    }
    if (object == nullptr) {
        return;
    }
    if (KRXThreadIsActive(&object->thread) != 0) {
        if (!leaves) {
            return;
        }
        KRXWaitForThread(&object->thread, nullptr, kThreadEndTimeout);  // it only has to return
    }
    forget(object);
}

void PollingThread::forget(const Held& object) {
    Held dropped;  // released, if it is, with no lock held
    {
        const platform::Lock lock(lock_);
        if (object_ == object) {
            dropped.swap(object_);
            leaving_ = false;
        }
    }
    Number number = object->number;
    beginning.compare_exchange_strong(number, 0);
}

void PollingThread::forgetStart() {
    Held object;
    {
        const platform::Lock lock(lock_);
        if (std::exchange(starting_, false)) {
            object = object_;
        }
    }
    if (object != nullptr) {
        forget(object);
    }
}

bool PollingThread::isHeld() const {
    const platform::Lock lock(lock_);
    return object_ != nullptr;
}

bool PollingThread::seesOrders() const {
    const platform::Lock lock(lock_);
    return object_ != nullptr && !starting_ && !leaving_ && !closing_;
}

bool PollingThread::isClosing() const {
    const platform::Lock lock(lock_);
    return closing_;
}

void PollingThread::stop() {
    Held object;
    {
        const platform::Lock lock(lock_);
        if (!std::exchange(closing_, true) && !starting_) {
            object = object_;
        }
    }
    if (object == nullptr) {
        // Nothing to wait for. A start that nobody carries out any more was left by a thread that ended in it.
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
    forget(object);
    object.reset();
    KRXLog(level::kForce, "%s",
           ended ? "\n Force Polling Thread shutdown complete."
                 : "\n Force Polling Thread FORCEFULLY shutdown complete.");
}

PollingThread::Number PollingThread::enter() {
    return beginning.exchange(0);
}

bool PollingThread::has(Number number) const {
    const platform::Lock lock(lock_);
    return object_ != nullptr && object_->number == number;
}

void PollingThread::setLeaving(Number number) {
    const platform::Lock lock(lock_);
    leaving_ |= has(number);
}
