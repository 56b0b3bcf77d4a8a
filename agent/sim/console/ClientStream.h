// The connection to one client.
#pragma once

#include <chrono>
#include <httplib.h>
#include <string>

namespace sim {

/// Reads one request and writes its response, with a limit for each: a client that sends too slowly or too
/// much, or that does not take what it asked for, is let go.
class ClientStream final : public httplib::Stream {
  public:
    struct Limits {
        std::chrono::milliseconds request;  ///< until all of the request is there
        std::size_t requestBytes;
        std::chrono::milliseconds write;  ///< until the client takes some more
    };

    /// `socket` stays the caller's.
    ClientStream(socket_t socket, Limits limits);

    bool is_readable() const override;
    bool is_writable() const override;
    ssize_t read(char* target, std::size_t size) override;
    ssize_t write(const char* source, std::size_t size) override;
    void get_remote_ip_and_port(std::string& ip, int& port) const override;
    void get_local_ip_and_port(std::string& ip, int& port) const override;
    socket_t socket() const override { return socket_; }

    /// Reads and drops what the client still sends, for a moment: a connection that is closed with something
    /// unread takes the response with it.
    void drain();

  private:
    using Clock = std::chrono::steady_clock;

    bool waitFor(short what, Clock::time_point deadline) const;

    socket_t socket_;
    Limits limits_;
    Clock::time_point deadline_;
    std::size_t left_;
    std::string buffer_;  ///< read from the socket and not yet taken
    std::size_t taken_ = 0;
};

}  // namespace sim
