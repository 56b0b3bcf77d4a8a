#pragma once

class RDMessageHandler;

/// Base of what is told of changes of the remote-detection state. Called by one thread at a time, with no lock held.
class RDObserver {
  public:
    RDObserver() = default;
    RDObserver(const RDObserver&) = delete;
    RDObserver& operator=(const RDObserver&) = delete;
    virtual ~RDObserver() = default;
    virtual void updateStatus(const RDMessageHandler* /*handler*/) {}
};
