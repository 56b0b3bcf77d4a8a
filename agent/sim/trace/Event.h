// What happens in a replay, and its line in the trace.
#pragma once

#include "lib/Enterprise.h"
#include "sim/time/Clock.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace sim {

/// A text or null, a number, or a list of names and values or null.
using Value = std::variant<std::optional<std::string>, std::int64_t, std::optional<agent::NamedValues>>;

struct Event {
    Instant time{0};
    std::chrono::microseconds wall{0};
    std::string thread;
    std::string_view name;
    std::vector<std::pair<std::string_view, Value>> fields;
    std::string remark;         ///< for people only
    bool isLeftBehind = false;  ///< of a thread that the module has let go of, and that runs on by itself
};

/// As one line of JSON.
std::string asJson(const Event& event);
/// An instant in seconds, three decimals.
std::string secondsText(Instant instant);

}  // namespace sim
