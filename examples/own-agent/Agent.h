// What a host sees of the minimal agent.
#pragma once

#include "platform/agent/ServiceAgent.h"

#include <atomic>

namespace device {

KRX_API extern std::atomic<int> polls;
KRX_API extern std::atomic<int> reports;
KRX_API KRX::ServiceAgentNS::ServiceAgent& serviceAgent();

}  // namespace device
