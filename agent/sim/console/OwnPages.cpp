#include "console/OwnPages.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <cctype>

namespace sim {

namespace {

constexpr std::array<std::string_view, 3> kThisMachine = {"localhost", "127.0.0.1", "::1"};
constexpr int kHttpPort = 80;

std::string lower(std::string_view text) {
    std::string copy(text);
    std::transform(copy.begin(), copy.end(), copy.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return copy;
}

bool isNumber(const std::string& host) {
    in6_addr address = {};
    return ::inet_pton(AF_INET, host.c_str(), &address) == 1 ||
           ::inet_pton(AF_INET6, host.c_str(), &address) == 1;
}

}  // namespace

bool OwnPages::isOwnHost(std::string_view host) const {
    // An address with colons stands in brackets.
    const std::size_t nameEnd = host.starts_with('[') ? std::min(host.find(']'), host.size() - 1) + 1
                                                      : std::min(host.find(':'), host.size());
    std::string name = lower(host.substr(0, nameEnd));
    const std::string_view rest = host.substr(nameEnd);
    if (name.starts_with('[') && name.ends_with(']')) {
        name = name.substr(1, name.size() - 2);
    }
    if (rest != ":" + std::to_string(port_) && !(rest.empty() && port_ == kHttpPort)) {
        return false;
    }
    if (std::find(kThisMachine.begin(), kThisMachine.end(), name) != kThisMachine.end() ||
        name == lower(address_)) {
        return true;
    }
    return (address_ == "0.0.0.0" || address_ == "::") && isNumber(name);
}

bool OwnPages::isOwnOrigin(std::string_view origin, std::string_view host) {
    return lower(origin) == "http://" + lower(host);
}

}  // namespace sim
