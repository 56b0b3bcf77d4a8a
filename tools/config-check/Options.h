// The command line.
#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace check {

/// A command line that means nothing.
class UsageError final : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

struct Options {
    enum class Mode : std::uint8_t { check, help, version };

    Mode mode = Mode::check;
    bool quiet = false;
    bool json = false;
    std::optional<std::string> schedule;
    std::vector<std::string> files;
};

/// Throws UsageError.
Options parseOptions(int count, char** words);

extern const char* const kHelp;

}  // namespace check
