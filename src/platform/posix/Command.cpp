#include "platform/Command.h"

#include <cstdlib>

namespace platform {

int runCommand(const char* command) noexcept {
    return std::system(command);
}

}  // namespace platform
