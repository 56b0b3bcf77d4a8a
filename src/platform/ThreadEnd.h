// How the module's own threads and the host's may be ended by others, and what the module does about it.
#pragma once

#include "ForcedUnwind.h"  // of the system that is built for

namespace platform {

// `ForcedUnwind`: what passes through the frames of a thread that is ended by unwinding it. It must not be
// kept from going on: a `catch (...)` stands behind a `catch (const platform::ForcedUnwind&) { throw; }`, and
// no frame that is `noexcept` lies on its way.

/// While one lives, the calling thread is not unwound: the end that was ordered comes with the next call
/// that admits it, afterwards. For functions that must not throw and make system calls that admit it.
/// May be nested.
class KeepThread final {
  public:
    KeepThread() noexcept;
    KeepThread(const KeepThread&) = delete;
    KeepThread& operator=(const KeepThread&) = delete;
    ~KeepThread();

  private:
    int before_ = 0;
};

/// Whether a library may call others, and wait for threads, while it is unloaded.
bool mayWaitAtUnload() noexcept;

}  // namespace platform
