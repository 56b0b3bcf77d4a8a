#pragma once

#include "controller/ZephanRSMSingleTon.h"
#include "platform/Published.h"

namespace entry {

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

/// The controller for a start, which holds `Lifecycle`. No stop can be under way then: a controller that is being stopped
/// was left so by a thread that ended in its stop, and makes room.
inline ZephanRSMSingleTon::Reference controllerForStart() {
    const auto present = ZephanRSMSingleTon::existing();
    if (present != nullptr && present->isStopping()) {
        ZephanRSMSingleTon::destroyInstance();
    }
    return ZephanRSMSingleTon::getInstance();
}

}  // namespace entry
