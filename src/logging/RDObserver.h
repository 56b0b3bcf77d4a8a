#pragma once

class RDMessageHandler;

/// Told of changes of the remote-detection state, by one thread at a time that holds no lock.
class RDObserver {
  public:
    RDObserver() = default;
    RDObserver(const RDObserver&) = delete;
    RDObserver& operator=(const RDObserver&) = delete;
    virtual ~RDObserver() = default;
    /// The state is at the handler, and may be the one of before.
    virtual void updateStatus(const RDMessageHandler* /*handler*/) {}
};
