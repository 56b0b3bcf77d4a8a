#pragma once

#include "controller/PollingThread.h"
#include "controller/RsmState.h"

class ZephanRSMSingleTon;
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
    ForcePollingTask(PollingThread::Number number, KRX::ServiceAgentNS::ServiceAgent& serviceAgent)
        : number_(number), serviceAgent_(serviceAgent) {}

    void run();
    // Each false when the thread was dropped: then it must end without touching anything more.
    bool waitForDelayedStart();
    bool pollUntilOver(KRX::ServiceAgentNS::VirtualAsset* asset);
    bool pollOnce(KRX::ServiceAgentNS::VirtualAsset& asset);
    bool apply(RsmState::Step step);
    bool report();
    /// Runs `use(controller)` while the thread belongs to it.
    template <typename Use>
    bool look(Use&& use);
    /// The same with `use(state, now)`.
    template <typename Use>
    bool lookAtState(Use&& use);

    PollingThread::Number number_;
    KRX::ServiceAgentNS::ServiceAgent& serviceAgent_;
};
