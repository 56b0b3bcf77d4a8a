#pragma once

#include "logging/RDObserver.h"

/// Observer that runs the configured modality script once at the start of each period of remote activity.
class TunnelListner final : public virtual RDObserver {
  public:
    /// Attaches itself to the handler, which must outlive it; a null handler leaves it inert.
    explicit TunnelListner(RDMessageHandler* handler);
    ~TunnelListner() override;
    void updateStatus(const RDMessageHandler* handler) override;

  private:
    /// Runs the script and waits for its end.
    static void ExecuteModalityScript();

    RDMessageHandler* subject_ = nullptr;
    bool idle_ = false;  ///< the script has not run since the last end of activity
};
