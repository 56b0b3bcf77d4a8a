#include "lib/Place.h"

namespace agent {

namespace {

thread_local Whereabouts ofThisThread;

}  // namespace

Place::Place(const char* name, Side side) : name_(name), side_(side), outer_(here().innermost) {
    Whereabouts& thread = here();
    thread.innermost = this;
    thread.inModule = side == Side::module;
    thread.moves.fetch_add(1, std::memory_order_relaxed);
}

Place::~Place() {
    Whereabouts& thread = here();
    thread.innermost = outer_;
    thread.inModule = outer_ != nullptr && outer_->side_ == Side::module;
}

Whereabouts& Place::here() {
    return ofThisThread;
}

bool Place::isInModule(const Whereabouts& thread) {
    return thread.inModule;
}

std::string Place::describe(const Whereabouts& thread) {
    std::string text;
    for (const Place* place = thread.innermost; place != nullptr; place = place->outer_) {
        text.insert(0, place->name_ + std::string(text.empty() ? "" : ", "));
    }
    return text;
}

}  // namespace agent
