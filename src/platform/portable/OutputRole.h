#pragma once

#include "platform/portable/KeptTexts.h"
#include "platform/portable/NoDestructor.h"

#include <atomic>

namespace platform {

/// Standard output as the module's threads share it: one at a time has the role of the writer and may wait
/// for a reader; nobody waits for the role.
struct Output {
    Mutex role;
    std::atomic<bool> writerDied{false};  ///< perhaps in a write, which leaves the stream locked for ever
    KeptTexts texts;
};

/// Never destroyed: threads of the host may still be here while the process ends.
inline Output& output() noexcept {
    static NoDestructor<Output> object;
    return *object;
}

/// The writer's role for a scope, if it is free.
class OutputRole final {
  public:
    explicit OutputRole(Output& output) noexcept : output_(output) {
        Mutex::Wait outcome = output.role.tryWait();
        if (outcome == Mutex::Wait::Abandoned) {
            output.writerDied = true;
            outcome = output.role.tryWait();
        }
        hasRole_ = outcome == Mutex::Wait::Obtained;
    }
    OutputRole(const OutputRole&) = delete;
    OutputRole& operator=(const OutputRole&) = delete;
    ~OutputRole() {
        if (hasRole_) {
            output_.role.release();
        }
    }

    /// True for all threads when no mutex could be made.
    bool mayWrite() const noexcept { return hasRole_ || output_.role.creationError() != 0; }

  private:
    Output& output_;
    bool hasRole_ = false;
};

}  // namespace platform
