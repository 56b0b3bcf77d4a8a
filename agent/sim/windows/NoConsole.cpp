#include "sim/console/Console.h"

#include <stdexcept>

namespace sim {

std::unique_ptr<Console> openConsole(const std::string& /*place*/, LiveSession& /*session*/,
                                     OrderQueue& /*orders*/, std::function<std::string(bool)> /*status*/) {
    throw std::runtime_error("--http: there is no live console on this system");
}

}  // namespace sim
