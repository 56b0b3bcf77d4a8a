// The live console: a session for a browser, and for programs as an enterprise would be one.
#pragma once

#include <functional>
#include <memory>
#include <string>

namespace sim {

class LiveSession;
class OrderQueue;

/// Serves a session over HTTP on threads of its own, from its creation to its end.
class Console final {
  public:
    /// Where to listen.
    struct Place {
        std::string address = "127.0.0.1";
        int port = 0;  ///< 0: any that is free
    };

    /// `session` and `orders` must outlive the console. `status` answers the session's status as JSON, on any
    /// thread. Throws std::runtime_error when the place cannot be had.
    Console(const Place& place, LiveSession& session, OrderQueue& orders,
            std::function<std::string()> status);
    Console(const Console&) = delete;
    Console& operator=(const Console&) = delete;
    /// Ends the session and the orders for the clients, and lets them go.
    ~Console();

    /// Its address for a browser.
    const std::string& url() const { return url_; }

  private:
    class Server;

    std::unique_ptr<Server> server_;
    std::string url_;
};

/// "[ADDRESS:]PORT"; an address with colons stands in brackets. Throws std::runtime_error for anything else.
Console::Place parsePlace(const std::string& text);

}  // namespace sim
