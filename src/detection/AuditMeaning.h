// What the text of an audit message says of remote activity. Asked by the module and by those who show what it did.
#pragma once

#include "detection/TextSearch.h"

#include <cstdint>
#include <string>

namespace config {
struct Settings;
}

/// What a message does to the number of open tunnels, or of running file transfers.
enum class Activity : std::uint8_t { none, open, close, abort };

/// The number after that; it was `count`, which is not below 0.
std::int32_t countAfter(Activity activity, std::int32_t count) noexcept;

struct AuditMeaning {
    Activity tunnel = Activity::none;
    Activity file = Activity::none;
};

/// The texts of a configuration that mark remote activity, prepared for the search. Any thread may ask at any time.
class ActivityTexts final {
  public:
    /// Nothing means anything.
    ActivityTexts() noexcept = default;
    /// The settings must outlive the texts, at the same place.
    explicit ActivityTexts(const config::Settings& settings) noexcept;

    AuditMeaning meaningOf(const char* message) const noexcept;

  private:
    struct Pair {
        TextSearch open;
        TextSearch close;

        Activity activityIn(const char* message) const noexcept;
    };

    Pair tunnel_;
    Pair file_;
    const std::string* abort_ = nullptr;
};
