// Programs that tests run.
#pragma once

#include <filesystem>
#include <string>

namespace support {

class Workspace;

struct Run {
    int status = -1;      ///< its exit status; -1 when it was ended
    std::string printed;  ///< on standard output and error
};

/// Runs a program with arguments that need no quoting, in the workspace's directory and a time zone.
Run runProgram(const Workspace& workspace, const std::string& program, const std::string& arguments,
               const std::string& zone);

/// A new empty directory for temporary files.
std::filesystem::path newDirectory();

}  // namespace support
