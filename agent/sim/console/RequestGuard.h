// Whether a request is to be served at all.
#pragma once

#include "sim/console/HttpServer.h"

namespace sim {

/// The refusal of a request that can be read in two ways, that does not mean the console listening at
/// `address`, or that a page of another origin makes; none for one of the console's own pages or a program.
std::optional<Answer> refusalOf(const Request& request, const std::string& address);

}  // namespace sim
