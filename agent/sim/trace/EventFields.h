// Reading an event's fields by their names.
#pragma once

#include "sim/trace/Event.h"

#include <algorithm>

namespace sim {

template <typename Kind>
const Kind* fieldOf(const Event& event, std::string_view key) {
    for (const auto& [name, value] : event.fields) {
        if (name == key) {
            return std::get_if<Kind>(&value);
        }
    }
    return nullptr;
}

/// The number, or -1 when there is none.
inline std::int64_t numberOf(const Event& event, std::string_view key) {
    const auto* number = fieldOf<std::int64_t>(event, key);
    return number == nullptr ? -1 : *number;
}

/// The text; none when it is null or missing.
inline std::optional<std::string> textOf(const Event& event, std::string_view key) {
    const auto* text = fieldOf<std::optional<std::string>>(event, key);
    return text == nullptr ? std::nullopt : *text;
}

/// The list; empty when it is null or missing.
inline agent::NamedValues listOf(const Event& event, std::string_view key) {
    const auto* list = fieldOf<std::optional<agent::NamedValues>>(event, key);
    return list == nullptr ? agent::NamedValues() : list->value_or(agent::NamedValues());
}

/// The value of that name in a list; none when it is null or missing.
inline std::optional<std::string> valueOf(const agent::NamedValues& list, std::string_view name) {
    const auto found =
        std::find_if(list.begin(), list.end(), [&](const auto& one) { return one.first == name; });
    return found == list.end() ? std::nullopt : found->second;
}

}  // namespace sim
