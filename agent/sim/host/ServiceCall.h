// One call of a web service, as an agent makes it for a received request.
#pragma once

#include "ZephanRSMLogger.h"
#include "sim/scenario/Words.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sim {

/// Of every request and response.
constexpr std::string_view kServiceNamespace = "urn:corvane-krx:urn:corvane-krx:ZephanServices_v1_0";

struct ServiceAnswer {
    std::int8_t result = -1;
    std::string_view stage;               ///< the last step that was reached
    std::optional<std::string> response;  ///< the written XML
    std::string remark;                   ///< why a request was refused
};

/// Calls `operation` with a request that holds these sub-elements; one without a value is left out.
ServiceAnswer callService(ZPService& service, const std::string& operation,
                          const std::vector<Assignment>& subElements);

}  // namespace sim
