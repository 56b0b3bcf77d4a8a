#pragma once

#include "controller/PollingThread.h"
#include "controller/RsmState.h"

#include <memory>

class SharedRsm;
namespace KRX::ServiceAgentNS {
class ServiceAgent;
class VirtualAsset;
}  // namespace KRX::ServiceAgentNS

/// What the force-polling thread does from its start to its end. It holds nothing over a sleep, and no
/// controller while the agent polls or reports: at each look it asks anew for the controller that it belongs
/// to, and ends when there is none any more. It is not told to stop: until a stop drops it, it goes on.
class ForcePollingTask final {
  public:
    /// The thread's entry function. 0 at a normal end, 1 when it cannot run.
    static int DataPollingTask(void* serviceAgent);

  private:
    ForcePollingTask(PollingThread::Number number, KRX::ServiceAgentNS::ServiceAgent* serviceAgent)
        : number_(number), serviceAgent_(serviceAgent) {}

    void run();
    /// After a run that an exception has ended: RSM is off, and the enterprise is told. False when an order has
    /// come in that no run has taken up: it gets one more.
    bool breaksOff();
    // Each false when the thread was dropped: then it must end without touching anything more.
    bool waitForDelayedStart();
    bool pollUntilOver(KRX::ServiceAgentNS::VirtualAsset* asset);
    bool pollOnce(KRX::ServiceAgentNS::VirtualAsset& asset);
    bool apply(RsmState::Step step);
    bool report();
    /// Tells what a thread of the host's has left to this one.
    bool reportWhatIsLeft();
    /// What the threads share while this one belongs to it; null when it was dropped.
    std::shared_ptr<SharedRsm> rsm() const;
    /// Runs `use(state, now)` under its lock.
    template <typename Use>
    bool look(Use&& use) const;
    /// The last look: true when the thread has to end.
    template <typename IsDone>
    bool leaves(IsDone&& isDone) const;

    PollingThread::Number number_;
    KRX::ServiceAgentNS::ServiceAgent* serviceAgent_;
};
