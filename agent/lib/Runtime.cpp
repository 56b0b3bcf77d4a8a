#include "lib/Runtime.h"

namespace agent {

namespace {

/// Threads whose objects may outlive their runtime.
std::list<std::unique_ptr<Thread>>& kept() {
    static auto& all = *new std::list<std::unique_ptr<Thread>>;
    return all;
}

}  // namespace

Runtime::~Runtime() {
    takeOver().clear();
    for (const auto& thread : threads_) {
        thread->join();
    }
    kept().splice(kept().end(), threads_);
}

Thread* Runtime::add(std::unique_ptr<Thread> thread) {
    return threads_.emplace_back(std::move(thread)).get();
}

std::list<std::unique_ptr<Thread>> Runtime::takeOver() {
    std::list<std::unique_ptr<Thread>> over;
    for (auto at = threads_.begin(); at != threads_.end();) {
        const auto next = std::next(at);
        if ((*at)->isOver()) {
            over.splice(over.end(), threads_, at);
        }
        at = next;
    }
    return over;
}

}  // namespace agent
