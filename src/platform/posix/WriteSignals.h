#pragma once

#include "platform/ThreadEnd.h"

#include <csignal>

namespace platform::posix {

/// While one lives, a write of the calling thread that fails sends no signal that would end the process: of a
/// pipe that nobody reads, or of a file at the limit of its size. Nor is the thread unwound, nor does a signal
/// cut the write short: it comes afterwards.
class WriteSignals final {
  public:
    WriteSignals() noexcept;
    WriteSignals(const WriteSignals&) = delete;
    WriteSignals& operator=(const WriteSignals&) = delete;
    /// Takes away the signal that goes with `errno`, unless it was there before.
    ~WriteSignals();

  private:
    KeepThread keep_;
    sigset_t before_{};
    sigset_t pending_{};
};

}  // namespace platform::posix
