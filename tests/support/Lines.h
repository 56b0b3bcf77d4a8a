#pragma once

#include "lib/Observer.h"

#include <string>
#include <string_view>
#include <utility>

namespace support {

/// The lines that were logged, as "LEVEL TEXT|...". For hosts whose threads log one at a time.
struct Lines final : agent::Observer {
    void onLog(int level, std::string_view text) override {
        all += std::to_string(level) + " " + std::string(text) + "|";
    }
    /// Those since the last look.
    std::string take() { return std::exchange(all, {}); }

    std::string all;
};

}  // namespace support
