#pragma once

#include "logging/ObserverList.h"

class RDObserver;

/// Holds the remote-detection state and tells its observers of it, also when a value was set again. Not for
/// use by two threads at once: the `LogManager` sees to that.
class RDMessageHandler final {
  public:
    RDMessageHandler() = default;
    RDMessageHandler(const RDMessageHandler&) = delete;
    RDMessageHandler& operator=(const RDMessageHandler&) = delete;

    void setTunnelActive(bool active);
    void setFileActive(bool active);
    bool isTunnelActive() const noexcept { return tunnelActive_; }
    bool isFileActive() const noexcept { return fileActive_; }
    void notify() const;
    void attach(RDObserver* observer) { observers_.attach(observer); }
    void detach(const RDObserver* observer) { observers_.detach(observer); }

  private:
    bool fileActive_ = false;
    bool tunnelActive_ = false;
    ObserverList<RDObserver> observers_;
};
