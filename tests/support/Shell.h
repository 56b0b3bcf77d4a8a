#pragma once

#include "support/Program.h"
#include "support/Workspace.h"

#include <string>

namespace support {

/// Runs a shell command in the workspace's directory.
Run shell(const Workspace& workspace, const std::string& command);

}  // namespace support
