#pragma once

#include "support/Workspace.h"

#include <string>

namespace support {

struct Run {
    int status = -1;      ///< its exit status; -1 when it was ended
    std::string printed;  ///< on standard output and error
};

/// Runs a shell command in the workspace's directory.
Run shell(const Workspace& workspace, const std::string& command);

}  // namespace support
