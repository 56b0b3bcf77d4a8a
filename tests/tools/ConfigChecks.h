// Runs of the configuration checker and of xmllint, and parts of configurations.
#pragma once

#include "support/Workspace.h"

#include <array>
#include <cstdio>
#include <string>
#include <vector>

#include <sys/wait.h>

namespace checks {

struct Run {
    int status = -1;
    std::string printed;  ///< on standard output and error
};

/// Runs a shell command in the workspace's directory.
inline Run shell(const support::Workspace& workspace, const std::string& command) {
    Run run;
    const std::string line = "cd '" + workspace.path("").string() + "' && { " + command + "; } 2>&1";
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

inline Run check(const support::Workspace& workspace, const std::string& arguments) {
    return shell(workspace, "'" CONFIG_CHECK "' " + arguments);
}

/// What xmllint says of files, a line each: "NAME validates" when one is valid by the schema.
inline std::string validate(const support::Workspace& workspace, const std::string& names) {
    return shell(workspace, "'" XMLLINT "' --nonet --noout --schema '" SCHEMA "' " + names).printed;
}

inline std::string in(const std::string& name, const std::string& inside) {
    return "<" + name + ">" + inside + "</" + name + ">";
}

/// A root element whose line 2 begins with `inside`.
inline std::string document(const std::string& inside) {
    return "<ZephanConfiguration>\n" + inside + "\n</ZephanConfiguration>\n";
}

inline std::string messages(const std::string& section, const std::string& open, const std::string& close) {
    return in(section,
              in("OpenMessage", in("Message", open)) + "\n" + in("CloseMessage", in("Message", close)));
}

}  // namespace checks
