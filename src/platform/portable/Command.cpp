#include "platform/portable/Command.h"

#include "platform/Console.h"

#include <cstdlib>

namespace platform {

int runCommand(const char* command) {
    flushEcho();
    return std::system(command);
}

}  // namespace platform
