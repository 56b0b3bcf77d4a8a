// The lock that the agent's log can be held under.
#pragma once

namespace agent {

/// Re-entrant, and waited for through the runtime. Held as long as the object lives, if it was wanted.
class LogLock final {
  public:
    /// Waits for the lock if `wanted`.
    explicit LogLock(bool wanted);
    LogLock(const LogLock&) = delete;
    LogLock& operator=(const LogLock&) = delete;
    ~LogLock();

    /// Takes the lock from the calling thread, which ends.
    static void drop();

  private:
    bool held_;
};

}  // namespace agent
