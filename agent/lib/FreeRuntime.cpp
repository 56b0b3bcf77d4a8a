#include "lib/FreeRuntime.h"

#include <algorithm>

namespace agent {

namespace {

/// How long a thread that has nothing left to do may take to end before nobody waits for it any more.
constexpr std::chrono::milliseconds kMoment(100);
/// The same for a thread that may still have to come out of the module.
constexpr std::chrono::seconds kLastWait(10);

bool mayRun(const Thread& thread) {
    return thread.isActive() && &thread != Thread::current();
}

}  // namespace

Thread* FreeRuntime::construct(Thread::Kind kind) {
    auto thread = std::make_unique<Thread>(kind);
    std::list<std::unique_ptr<Thread>> over;  // goes without the lock
    const std::lock_guard lock(mutex_);
    over = takeOver();
    return add(std::move(thread));
}

bool FreeRuntime::start(Thread& thread) {
    return thread.launch([this, &thread] {
        const struct End {
            FreeRuntime& runtime;
            Thread& thread;
            ~End() {  // also when the thread is unwound
                const std::lock_guard lock(runtime.mutex_);
                thread.setEnded();
                runtime.changed_.notify_all();
            }
        } end{*this, thread};
        thread.run();
    });
}

void FreeRuntime::end(Thread& thread, ThreadDestroy how) {
    std::unique_lock lock(mutex_);
    if (!mayRun(thread)) {
        return;
    }
    thread.cancel(how);
    changed_.notify_all();
    if (thread.leavesNow()) {
        changed_.wait_for(lock, kMoment, [&thread] { return !thread.isActive(); });
    }
}

void FreeRuntime::release(Thread& thread) {
    std::list<std::unique_ptr<Thread>> over;  // goes without the lock
    const std::lock_guard lock(mutex_);
    thread.disown();
    over = takeOver();
}

bool FreeRuntime::endAll() {
    std::list<std::unique_ptr<Thread>> over;
    std::unique_lock lock(mutex_);
    for (const auto& thread : threads()) {
        if (mayRun(*thread)) {
            thread->cancel(ThreadDestroy::anywhere);
        }
    }
    changed_.notify_all();
    const bool ended = changed_.wait_for(lock, kLastWait, [this] {
        return std::none_of(threads().begin(), threads().end(),
                            [](const auto& thread) { return mayRun(*thread); });
    });
    over = takeOver();
    return ended;
}

void FreeRuntime::wait(std::chrono::milliseconds time, const Condition& until) {
    std::unique_lock lock(mutex_);
    if (time == Thread::kForever) {
        changed_.wait(lock, until);
    } else {
        changed_.wait_for(lock, time / speed_, until);
    }
}

void FreeRuntime::change(const std::function<void()>& change) {
    const std::lock_guard lock(mutex_);
    change();
    changed_.notify_all();
}

}  // namespace agent
