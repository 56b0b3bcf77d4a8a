#pragma once

#include <string>

namespace logreader {

/// The path of the log file that a configuration file of the module names, with slashes. Throws
/// std::runtime_error when the file cannot be read.
std::string configuredPath(const std::string& configuration);

}  // namespace logreader
