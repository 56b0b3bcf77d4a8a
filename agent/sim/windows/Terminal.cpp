#include "sim/input/Terminal.h"

namespace sim {

// The system's own console edits what is typed in it.

std::unique_ptr<Terminal> Terminal::open() {
    return nullptr;
}

Terminal::Terminal(std::FILE* output) : output_(output) {}

Terminal::~Terminal() = default;

void Terminal::close() {}

bool Terminal::read(std::deque<std::string>& /*lines*/) {
    return false;
}

bool Terminal::clearLine() {
    return false;
}

Terminal::Hidden::Hidden(Terminal* terminal) : terminal_(terminal) {}

Terminal::Hidden::~Hidden() = default;

}  // namespace sim
