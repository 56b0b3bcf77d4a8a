#include "lib/Place.h"

namespace agent {

namespace {

thread_local Whereabouts ofThisThread;

}  // namespace

Place::Place(const char* name, Side side) : name_(name), side_(side), outer_(here().innermost) {
    Whereabouts& thread = here();
    thread.innermost = this;
    thread.moves.fetch_add(1, std::memory_order_relaxed);
}

Place::~Place() {
    here().innermost = outer_;
}

Whereabouts& Place::here() {
    return ofThisThread;
}

bool Place::isInModule(const Whereabouts& thread) {
    const Place* place = thread.innermost;
    return place != nullptr && place->side_ == Side::module;
}

std::string Place::describe(const Whereabouts& thread) {
    std::string text;
    for (const Place* place = thread.innermost; place != nullptr; place = place->outer_) {
        text.insert(0, place->name_ + std::string(text.empty() ? "" : ", "));
    }
    return text;
}

}  // namespace agent
