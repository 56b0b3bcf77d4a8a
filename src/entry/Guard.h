#pragma once

#include "platform/Published.h"
#include "platform/ThreadEnd.h"

#include <cstdint>

namespace entry {

constexpr std::int8_t kSuccess = 0;
constexpr std::int8_t kFailure = -1;

/// Runs the body of an export; whatever is thrown in it becomes `failure`, since nothing may be thrown into
/// the host. A host thread that is being unwound goes on to its end.
template <typename Result, typename Body>
Result guarded(Result failure, Body&& body) {
    try {
        return body();
    } catch (const platform::ForcedUnwind&) {
        throw;
    } catch (...) {
        return failure;
    }
}

/// While one lives, no other start or stop runs. One that was left behind by a thread which ended within is taken over.
class Lifecycle final {
  public:
    Lifecycle() noexcept : lock_(mutex()) {}

  private:
    static platform::Mutex& mutex() noexcept {
        static platform::Immortal<platform::Mutex> mutex;
        return *mutex;
    }

    platform::Lock lock_;
};

}  // namespace entry
