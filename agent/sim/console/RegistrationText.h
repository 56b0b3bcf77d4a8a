// What the enterprise last accepted, for those who ask over the network.
#pragma once

#include "sim/console/LiveSession.h"

#include <string>

namespace sim {

/// The profile as a registration record would bear it.
std::string registrationXml(const LiveSession::Profile& profile);
std::string registrationJson(const LiveSession::Profile& profile);

}  // namespace sim
