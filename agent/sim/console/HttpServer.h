// The transport of the console.
#pragma once

#include <atomic>
#include <functional>
#include <list>
#include <map>
#include <microhttpd.h>
#include <optional>
#include <string>
#include <thread>

namespace sim {

class Bell;

/// What a client asks for, as long as its connection lives.
struct Request {
    MHD_Connection* connection;
    int port = 0;  ///< that it came to
    std::string method = {};
    std::string path = {};
    std::string body = {};

    /// Of a header, or of an argument behind the path's question mark; none when it is not there.
    std::optional<std::string> value(MHD_ValueKind kind, const char* name) const;
};

struct Answer {
    unsigned int status;
    std::string type;
    std::string body = {};
    std::string allowed = {};  ///< the methods that the path has, when another one is refused

    /// A better answer, which may take a while: asked for when the bell rings, until it is there or too late.
    std::function<std::optional<Answer>()> later = {};
    /// Of an answer that goes on: its next text, when the client has taken the last one and the bell rings or
    /// one is due. None: nothing yet; an empty one: the end.
    std::function<std::optional<std::string>(bool isDue)> next = {};
};

/// Serves any number of clients on one thread of its own, one request a connection. A client is let go when
/// its request takes too long or is too large, and when it does not take its answer.
class HttpServer final {
  public:
    /// The work done on the server's thread. May throw; the client is then told that it cannot be served.
    using Handler = std::function<Answer(const Request&)>;

    /// With port 0 at any that is free. `bell` rings when answers that wait have something new, and must
    /// outlive the server. `headers` stand in each answer. Throws std::runtime_error when it cannot listen.
    HttpServer(const std::string& address, int port, Bell& bell, std::map<std::string, std::string> headers,
               Handler handler);
    /// Gives clients that have an answer a moment to take it, and lets all go.
    ~HttpServer();

    int port() const { return MHD_get_daemon_info(daemon_, MHD_DAEMON_INFO_BIND_PORT)->port; }

  private:
    struct Client;

    void run();
    /// Goes on with those that wait, and lets those go that are too slow.
    void lookAtClients(bool isRung);

    Bell& bell_;
    const std::map<std::string, std::string> headers_;
    const Handler handler_;
    std::list<Client> clients_;  ///< in the order in which they came
    MHD_Daemon* daemon_ = nullptr;
    std::atomic<bool> isOver_ = false;
    std::thread thread_;
};

/// The refusal of a request, with its reason for a person.
Answer refusal(unsigned int status, const std::string& reason, const std::string& allowed = "");

}  // namespace sim
