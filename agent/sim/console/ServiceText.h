// What goes over the network in the enterprise's web service.
#pragma once

#include "sim/console/LiveSession.h"

#include <string>
#include <string_view>

namespace sim {

/// The line that makes the call for a received request: `connect` or `disconnect` where the request says no
/// more than that, `call` otherwise. Throws std::runtime_error with the reason when the text is not a request of
/// the service; whether the operation and its sub-elements exist is for the module to say.
std::string lineOfRequest(std::string_view xml);

/// What the enterprise last accepted, as a registration record would bear it.
std::string registrationXml(const LiveSession::Profile& profile);
std::string registrationJson(const LiveSession::Profile& profile);

}  // namespace sim
