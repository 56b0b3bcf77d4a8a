#include "sim/input/Input.h"

#include <utility>

namespace sim {

std::string Input::takeLine() {
    std::string line = std::move(lines_.front());
    lines_.pop_front();
    return line;
}

void Input::take(std::string_view bytes) {
    partial_ += bytes;
    std::size_t start = 0;
    for (std::size_t end = 0; (end = partial_.find('\n', start)) != std::string::npos; start = end + 1) {
        lines_.push_back(partial_.substr(start, end - start));
    }
    partial_.erase(0, start);
}

void Input::end() {
    open_ = false;
    if (!partial_.empty()) {
        lines_.push_back(std::exchange(partial_, {}));
    }
}

}  // namespace sim
