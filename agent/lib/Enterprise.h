// The enterprise, as far as an agent's registration client reaches it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace agent {

/// Names and values in list order; a value may be null.
using NamedValues = std::vector<std::pair<std::string, std::optional<std::string>>>;

/// Receives registration records.
class Enterprise {
  public:
    virtual ~Enterprise() = default;

    /// Takes the record of `member`. 0, or another value to refuse it. Called on the sending thread, on
    /// several at once.
    virtual std::int8_t receive(const std::string& member, const NamedValues& properties) = 0;
};

}  // namespace agent
