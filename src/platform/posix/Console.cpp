#include "platform/Console.h"

#include <cstdio>

namespace platform {

void echo(const char* text) noexcept {
    std::fputs(text, stdout);
}

void complain(const char* text) noexcept {
    std::fputs(text, stderr);
}

}  // namespace platform
