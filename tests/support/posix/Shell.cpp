#include "support/Shell.h"

#include <array>
#include <cstdio>

#include <sys/wait.h>

namespace support {

Run shell(const Workspace& workspace, const std::string& command) {
    Run run;
    const std::string line = "cd '" + workspace.path("").string() + "' && { " + command + "\n} 2>&1";
    FILE* const pipe = ::popen(line.c_str(), "r");
    if (pipe == nullptr) {
        return run;
    }
    std::array<char, 4096> buffer{};
    for (std::size_t count = 0; (count = std::fread(buffer.data(), 1, buffer.size(), pipe)) > 0;) {
        run.printed.append(buffer.data(), count);
    }
    const int status = ::pclose(pipe);
    run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return run;
}

}  // namespace support
