#include "Pager.h"

#include <csignal>
#include <cstdlib>

#include <unistd.h>

namespace logreader {

Pager::Pager(bool wanted) {
    if (!wanted || ::isatty(STDOUT_FILENO) != 1) {
        return;
    }
    // Ends when all fits on the terminal, cuts no lines, leaves the text there; what looks like a control character
    // stays a sign.
    ::setenv("LESS", "FSXM", 0);
    pipe_ = ::popen("exec ${PAGER:-$(command -v less || command -v more || echo cat)}", "w");
    // It is for the pager to say what an interrupt ends.
    std::signal(SIGINT, SIG_IGN);
}

Pager::~Pager() {
    if (pipe_ != nullptr) {
        ::pclose(pipe_);
    }
}

}  // namespace logreader
