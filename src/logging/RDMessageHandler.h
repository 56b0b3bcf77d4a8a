#pragma once

#include "logging/ObserverList.h"
#include "platform/portable/Lock.h"

class RDObserver;

/// Holds the remote-detection state and tells its observers of it, also when a value was set again. Observers
/// may be attached by any thread; the state is changed, and told, by one thread at a time: the `LogManager`
/// sees to that.
class RDMessageHandler final {
  public:
    /// The lock guards the list of observers and must outlive the handler.
    explicit RDMessageHandler(platform::Mutex& delivery) noexcept : delivery_(delivery) {}
    RDMessageHandler(const RDMessageHandler&) = delete;
    RDMessageHandler& operator=(const RDMessageHandler&) = delete;

    /// Each sets and tells.
    void setTunnelActive(bool active);
    void setFileActive(bool active);
    bool isTunnelActive() const noexcept { return tunnelActive_; }
    bool isFileActive() const noexcept { return fileActive_; }
    /// Calls the observers in the order in which they were attached, with no lock held.
    void notify() const;
    /// Observers are not owned.
    void attach(RDObserver* observer);
    void detach(const RDObserver* observer);

  private:
    platform::Mutex& delivery_;
    bool fileActive_ = false;
    bool tunnelActive_ = false;
    ObserverList<RDObserver> observers_;
};
