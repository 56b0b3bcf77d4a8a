// Whether a request comes from where it should.
#pragma once

#include <string>
#include <string_view>

namespace sim {

/// Tells requests of the console's own pages, and of programs, from those that other sites' pages make.
class OwnPages final {
  public:
    OwnPages(std::string address, int port) : address_(std::move(address)), port_(port) {}

    /// `host` is the request's header. A name that anybody can let point here is foreign: only the address
    /// that was listened on, this machine's own names and, when all addresses are listened on, any number.
    bool isOwnHost(std::string_view host) const;
    /// `origin` is the request's header; a program that is no browser sends none.
    static bool isOwnOrigin(std::string_view origin, std::string_view host);

  private:
    std::string address_;
    int port_;
};

}  // namespace sim
