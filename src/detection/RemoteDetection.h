#pragma once

#include "logging/RDObserver.h"

#include <memory>

class ZephanRSMSingleTon;

/// Observer that tells the controller when remote activity (open tunnel, file transfer) begins and has ended.
class RemoteDetection final : public virtual RDObserver {
  public:
    /// Attaches itself to the handler, which must outlive it; a null handler leaves it inert.
    explicit RemoteDetection(RDMessageHandler* handler);
    ~RemoteDetection() override;
    void updateStatus(const RDMessageHandler* handler) override;

  private:
    void UpdateRemoteActivity();

    RDMessageHandler* subject_ = nullptr;
    /// The one that this detection belongs to: what it has to tell late must not reach the next one.
    std::weak_ptr<ZephanRSMSingleTon> controller_;
    bool idle_ = false;  ///< no activity reported since the last end of activity
};
