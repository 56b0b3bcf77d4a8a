#include "lib/Runtime.h"

namespace agent {

Runtime::~Runtime() {
    static auto& kept = *new std::list<std::unique_ptr<Thread>>;
    takeOver().clear();
    for (const auto& thread : threads_) {
        thread->join();
    }
    kept.splice(kept.end(), threads_);
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
