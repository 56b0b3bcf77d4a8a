#include "lib/Thread.h"

#include "lib/LogLock.h"
#include "lib/Observer.h"
#include "lib/Plugs.h"
#include "lib/Runtime.h"
#include "lib/SystemThread.h"

#include <exception>
#include <utility>

namespace agent {

namespace {

thread_local Thread* currentThread = nullptr;

/// The longest thread name that every system takes, without the end mark.
constexpr std::size_t kSystemNameLength = 15;

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
    self->leaveIfCancelled(asleep);
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
            system::admitUnwinding(false);  // What the agent does of its own is never cut.
            run();
        });
        return true;  // It may have ended already.
    } catch (const std::exception&) {
        active_ = false;
        return false;
    }
}

void Thread::run() {
    if (cancelled_ != ThreadDestroy::leave) {
        return;
    }
    begun_ = true;
    currentThread = this;
    bottom_ = __builtin_frame_address(0);
    system::nameThread(name_.substr(0, kSystemNameLength));
    const struct End {
        ~End() { LogLock::drop(); }  // also when the thread is unwound
    } end;
    if (AGENT_MARK_WAY_OUT(wayOut_) == 0) {  // NOLINT(cert-err52-cpp,modernize-avoid-setjmp-longjmp)
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
    system::admitUnwinding(false);
}

void Thread::cancel(ThreadDestroy how) {
    if (how == ThreadDestroy::unwind) {
        system::unwind(handle_);
    }
    cancelled_ = how;
}

bool Thread::leavesNow() const {
    const Blocked blocked = blocked_;
    return !begun_ || (blocked != Blocked::no && mustLeave(blocked == Blocked::asleep));
}

bool Thread::mustLeave(bool asleep) const {
    switch (cancelled_) {
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

void Thread::leaveIfCancelled(bool asleep) {
    if (!mustLeave(asleep)) {
        return;
    }
    if (cancelled_ == ThreadDestroy::unwind) {
        cancelled_ = ThreadDestroy::leave;  // Calls made while the frames are unwound are not stopped.
        system::beUnwound(bottom_);
        return;  // The system unwinds already.
    }
    if (!asleep) {
        system::forgiveFrames(bottom_);  // Over a sleep the module owns nothing.
    }
    std::longjmp(wayOut_, 1);  // NOLINT(cert-err52-cpp,modernize-avoid-setjmp-longjmp): see the class comment
}

AgentCall::AgentCall(const char* function, bool asleep)
    : place_(function, Place::Side::agent), self_(currentThread) {
    if (self_ != nullptr) {
        unwindingAdmitted_ = system::admitUnwinding(false);
        cancellable_ = self_->cancellable_.exchange(unwindingAdmitted_);
        self_->leaveIfCancelled(asleep);
    }
}

AgentCall::~AgentCall() {
    if (self_ != nullptr) {
        self_->cancellable_ = cancellable_;
        system::admitUnwinding(unwindingAdmitted_);
    }
}

ModuleCall::ModuleCall(const char* function) : place_(function, Place::Side::module), self_(currentThread) {
    if (self_ != nullptr && self_->cancellable_) {
        system::admitUnwinding(true);
    }
}

ModuleCall::~ModuleCall() {
    if (self_ != nullptr) {
        system::admitUnwinding(false);
    }
}

}  // namespace agent
