#include "lib/Thread.h"

#include "lib/LogLock.h"
#include "lib/Observer.h"
#include "lib/Plugs.h"
#include "lib/Runtime.h"

#include <exception>
#include <list>
#include <mutex>
#include <utility>
#include <vector>

#include <pthread.h>

/// Of the address sanitizer, if there is one.
// NOLINTNEXTLINE(bugprone-reserved-identifier): its name
extern "C" void __asan_unpoison_memory_region(const volatile void* begin, std::size_t size)
    __attribute__((weak, visibility("default")));

namespace agent {

namespace {

thread_local Thread* currentThread = nullptr;

/// The longest thread name that the system takes, without the end mark.
constexpr std::size_t kSystemNameLength = 15;

int setCancelState(int state) {
    int old = 0;
    pthread_setcancelstate(state, &old);
    return old;
}

/// The address sanitizer would take what the frames up to `bottom` marked on the stack for marks of those
/// that come after them.
__attribute__((noinline)) void forgetFrames(const void* bottom) {
    if (__asan_unpoison_memory_region != nullptr) {
        const void* here = __builtin_frame_address(0);
        __asan_unpoison_memory_region(here, static_cast<std::size_t>(static_cast<const char*>(bottom) -
                                                                     static_cast<const char*>(here)));
    }
}

/// Keeps a copy of the stack from here to `bottom` for the rest of the process: what the frames held goes
/// with them, which is the end that they were given and no leak. The copy tells leak checkers so.
__attribute__((no_sanitize("address", "thread"), noinline)) void keepStack(const void* bottom) {
    static auto& mutex = *new std::mutex;
    static auto& kept = *new std::list<std::vector<std::uintptr_t>>;
    const volatile std::uintptr_t here = 0;
    const volatile std::uintptr_t* word = &here;
    std::vector<std::uintptr_t> words(
        static_cast<std::size_t>(static_cast<const volatile std::uintptr_t*>(bottom) - word));
    std::uintptr_t* const target = words.data();
    for (std::size_t i = 0; i < words.size(); ++i) {
        target[i] = word[i];
    }
    const std::lock_guard lock(mutex);
    kept.push_back(std::move(words));
}

}  // namespace

void Thread::join() {
    if (handle_.joinable()) {
        handle_.join();
    }
}

Thread* Thread::current() {
    return currentThread;
}

bool Thread::block(std::chrono::milliseconds time, const std::function<bool()>& until, bool asleep) {
    Thread* self = currentThread;
    bool met = false;
    if (self == nullptr) {
        const auto condition = [&] { return met = until(); };
        runtime().wait(time, std::ref(condition));
        return met;
    }
    const auto condition = [&] { return self->mustLeave(asleep) || (met = until()); };
    self->blocked_ = asleep ? Blocked::asleep : Blocked::inAgent;
    runtime().wait(time, std::ref(condition));
    self->leaveIfHalted(asleep);
    self->blocked_ = Blocked::no;
    return met;
}

bool Thread::prepare(const std::string& name, int priority, Work work) {
    if (!work || work_) {
        return false;
    }
    name_ = name;
    priority_ = priority;
    work_ = std::move(work);
    return true;
}

bool Thread::launch(std::function<void()> body) {
    active_ = true;
    try {
        handle_ = std::thread([run = std::move(body)] {
            setCancelState(PTHREAD_CANCEL_DISABLE);  // What the agent does of its own is never cut.
            run();
        });
        return true;  // It may have ended already.
    } catch (const std::exception&) {
        active_ = false;
        return false;
    }
}

void Thread::run() {
    if (halted_ != ThreadDestroy::leave) {
        return;
    }
    begun_ = true;
    currentThread = this;
    bottom_ = __builtin_frame_address(0);
    pthread_setname_np(pthread_self(), name_.substr(0, kSystemNameLength).c_str());
    const struct End {
        ~End() { LogLock::drop(); }  // also when the thread is unwound
    } end;
    if (setjmp(wayOut_) == 0) {  // NOLINT(cert-err52-cpp,modernize-avoid-setjmp-longjmp)
        if (kind_ == Kind::module) {
            const ModuleCall call("its entry function");
            result_ = work_();
        } else {
            result_ = work_();
        }
        completed_ = true;
        if (kind_ == Kind::module) {
            observer().onThreadEnd(result_);
        }
    }
    setCancelState(PTHREAD_CANCEL_DISABLE);
}

void Thread::halt(ThreadDestroy how) {
    if (how == ThreadDestroy::unwind) {
        pthread_cancel(handle_.native_handle());
    }
    halted_ = how;
}

bool Thread::leavesNow() const {
    const Blocked blocked = blocked_;
    return !begun_ || (blocked != Blocked::no && mustLeave(blocked == Blocked::asleep));
}

bool Thread::mustLeave(bool asleep) const {
    switch (halted_) {
        case ThreadDestroy::sleep:
            return asleep;
        case ThreadDestroy::anywhere:
            return true;
        case ThreadDestroy::unwind:
            return cancellable_;
        case ThreadDestroy::leave:
            break;
    }
    return false;
}

void Thread::leaveIfHalted(bool asleep) {
    if (!mustLeave(asleep)) {
        return;
    }
    if (halted_ == ThreadDestroy::unwind) {
        halted_ = ThreadDestroy::leave;  // What is called while the frames are unwound goes its way.
        forgetFrames(bottom_);
        setCancelState(PTHREAD_CANCEL_ENABLE);
        pthread_testcancel();
        return;  // The system unwinds already.
    }
    if (!asleep) {
        keepStack(bottom_);  // Over a sleep the module owns nothing.
    }
    std::longjmp(wayOut_, 1);  // NOLINT(cert-err52-cpp,modernize-avoid-setjmp-longjmp): see the class comment
}

AgentCall::AgentCall(const char* function, bool asleep)
    : place_(function, Place::Side::agent), self_(currentThread) {
    if (self_ != nullptr) {
        cancelState_ = setCancelState(PTHREAD_CANCEL_DISABLE);
        cancellable_ = self_->cancellable_.exchange(cancelState_ == PTHREAD_CANCEL_ENABLE);
        self_->leaveIfHalted(asleep);
    }
}

AgentCall::~AgentCall() {
    if (self_ != nullptr) {
        self_->cancellable_ = cancellable_;
        setCancelState(cancelState_);
    }
}

ModuleCall::ModuleCall(const char* function) : place_(function, Place::Side::module), self_(currentThread) {
    if (self_ != nullptr && self_->cancellable_) {
        setCancelState(PTHREAD_CANCEL_ENABLE);
    }
}

ModuleCall::~ModuleCall() {
    if (self_ != nullptr) {
        setCancelState(PTHREAD_CANCEL_DISABLE);
    }
}

}  // namespace agent
