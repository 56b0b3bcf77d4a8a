// Who may be inside the module when. The shared objects (controller, configuration, listeners) are replaced
// and destroyed by the start and stop exports while other threads of the host log and call; the gate keeps
// those apart.
//
// Order in which locks are taken, outermost first; no lock is taken while one further down is held:
//   1. Lifecycle: one start or stop at a time
//   2. the gate: Pass (shared) or Alone (exclusive)
//   3. ScheduleRSMHandler's command lock
//   4. the controller's thread mutex
//   5. LogManager's delivery lock; re-entrant, since a delivery may log and the line comes back
//   6. the log file writer's mutex; re-entrant likewise
//   7. the controller's instance lock; re-entrant, since the making of the controller may log
//   8. the controller's state lock; nothing is called under it that could log
// The polling thread holds a Pass while it works and none while it sleeps, so a stop, which waits for that
// thread with the gate open, never waits for a thread that waits for the gate.
#pragma once

namespace gate {

/// Held by every thread while it runs code of the module that touches shared objects. Re-entrant. Waits while
/// another thread is alone inside.
class Pass final {
  public:
    Pass() noexcept { enter(); }
    Pass(const Pass&) = delete;
    Pass& operator=(const Pass&) = delete;
    ~Pass() { leave(); }

    /// For a thread that cannot rely on its destructors (it may be dropped while it sleeps).
    static void enter() noexcept;
    static void leave() noexcept;
};

/// Held by a start or stop export for its whole length.
class Lifecycle final {
  public:
    Lifecycle() noexcept;
    Lifecycle(const Lifecycle&) = delete;
    Lifecycle& operator=(const Lifecycle&) = delete;
    ~Lifecycle();
};

/// While it lives no other thread is inside. The holder itself passes freely. Only for a holder of
/// `Lifecycle` that holds no Pass.
class Alone final {
  public:
    Alone() noexcept;
    Alone(const Alone&) = delete;
    Alone& operator=(const Alone&) = delete;
    ~Alone();
};

}  // namespace gate
