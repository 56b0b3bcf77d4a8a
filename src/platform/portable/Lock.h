#pragma once

#include "platform/Mutex.h"

namespace platform {

/// Holds a mutex for its scope. One that its owner left behind is taken over, so what the mutex guards must
/// be usable after any of its changes.
class SCOPED_CAPABILITY Lock final {
  public:
    explicit Lock(Mutex& mutex) noexcept ACQUIRES(mutex) UNCHECKED : mutex_(mutex) {
        Mutex::Wait outcome = mutex.wait();
        while (outcome == Mutex::Wait::Abandoned) {
            outcome = mutex.wait();
        }
        held_ = outcome == Mutex::Wait::Obtained;
    }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;
    ~Lock() RELEASES() UNCHECKED {
        if (held_) {
            mutex_.release();
        }
    }

    /// False when the system refused the mutex.
    bool isHeld() const noexcept { return held_; }

  private:
    Mutex& mutex_;
    bool held_ = false;
};

}  // namespace platform
