// A web service request as it comes over the network.
#pragma once

#include <string>
#include <string_view>

namespace sim {

/// The line that makes the call for a received request: `connect` or `disconnect` where the request says no
/// more than that, `call` otherwise. Throws std::runtime_error with the reason when the text is no request of
/// the service; whether the operation and its sub-elements exist is for the module to say.
std::string lineOfRequest(std::string_view xml);

}  // namespace sim
