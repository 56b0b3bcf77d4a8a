// The live console: a session for a browser, and for programs as an enterprise would be one.
#pragma once

#include <functional>
#include <memory>
#include <string>

namespace sim {

class LiveSession;
class OrderQueue;

/// Serves a session over HTTP on a thread of its own. Its end is that of the session and of the orders for
/// the clients, which are let go.
class Console {
  public:
    virtual ~Console() = default;

    /// Its address for a browser.
    virtual std::string url() const = 0;
};

/// `place` is "[ADDRESS:]PORT": this machine's own address if there is none, one with colons in brackets, and
/// port 0 for any that is free. `session` and `orders` must outlive the console. `status` answers the session's status
/// on any thread: as JSON, or for true as Prometheus' metrics. Throws std::runtime_error when the address is not available.
std::unique_ptr<Console> openConsole(const std::string& place, LiveSession& session, OrderQueue& orders,
                                     std::function<std::string(bool)> status);

}  // namespace sim
