#include "sim/console/RequestGuard.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <cstring>
#include <strings.h>

namespace sim {

namespace {

constexpr int kHttpPort = 80;

bool isSame(const std::string& one, const std::string& other) {
    return ::strcasecmp(one.c_str(), other.c_str()) == 0;
}

/// Whether it could be taken for another one by who stands in between, or for another one's.
bool isAmbiguous(const Request& request) {
    static constexpr std::array<const char*, 6> kSingle = {
        "Content-Length", "Transfer-Encoding", "Content-Type", "Host", "Origin", "Sec-Fetch-Site"};
    std::array<int, kSingle.size()> counts = {};
    const auto count = [](void* counted, MHD_ValueKind, const char* name, const char*) {
        for (std::size_t i = 0; i < kSingle.size(); ++i) {
            static_cast<int*>(counted)[i] += isSame(name, kSingle[i]) ? 1 : 0;
        }
        static_cast<int*>(counted)[0] += std::strpbrk(name, " \t") == nullptr ? 0 : 2;  // some would cut it
        return MHD_YES;
    };
    MHD_get_connection_values(request.connection, MHD_HEADER_KIND, count, counts.data());
    return counts[0] + counts[1] > 1 || *std::max_element(counts.begin(), counts.end()) > 1;
}

/// A name that anybody can let point here is foreign: only the address that is listened on, this machine's
/// own names and, when all addresses are listened on, any number.
bool isOwnHost(std::string name, const std::string& address, int port) {
    const std::string end = ":" + std::to_string(port);
    if (name.ends_with(end)) {
        name.resize(name.size() - end.size());
    } else if (port != kHttpPort) {
        return false;
    }
    if (name.starts_with('[') && name.ends_with(']')) {
        name = name.substr(1, name.size() - 2);
    }
    in6_addr parsed = {};
    const bool isNumber =
        ::inet_pton(AF_INET, name.c_str(), &parsed) == 1 || ::inet_pton(AF_INET6, name.c_str(), &parsed) == 1;
    return isSame(name, "localhost") || isSame(name, "127.0.0.1") || name == "::1" || isSame(name, address) ||
           ((address == "0.0.0.0" || address == "::") && isNumber);
}

}  // namespace

std::optional<Answer> refusalOf(const Request& request, const std::string& address) {
    const std::string host = request.value(MHD_HEADER_KIND, "Host").value_or("");
    const std::string origin = request.value(MHD_HEADER_KIND, "Origin").value_or("http://" + host);
    const std::string site =
        request.value(MHD_HEADER_KIND, "Sec-Fetch-Site").value_or("none");  // "none": by a person's hand
    if (isAmbiguous(request)) {
        return refusal(MHD_HTTP_BAD_REQUEST, "the request can be read in more than one way");
    }
    if (!isOwnHost(host, address, request.port)) {
        return refusal(MHD_HTTP_FORBIDDEN, "this host is not served here: " + host);
    }
    if (!isSame(origin, "http://" + host) || (site != "none" && site != "same-origin")) {
        return refusal(MHD_HTTP_FORBIDDEN, "pages of another origin may not ask: " + origin);
    }
    return std::nullopt;
}

}  // namespace sim
