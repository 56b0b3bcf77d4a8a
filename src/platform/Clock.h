#pragma once

#include <cstdint>
#include <ctime>

namespace platform {

/// The present: seconds since 1970-01-01 00:00:00 UTC. Nowhere else does the module read it. Any thread.
std::int64_t now() noexcept;

/// A moment's fields in local time and in UTC. A moment beyond the calendar counts as second 0.
std::tm localFields(std::int64_t moment) noexcept;
std::tm utcFields(std::int64_t moment) noexcept;

/// The moment of UTC fields; fields out of range are carried over.
std::int64_t momentOfUtc(std::tm fields) noexcept;

}  // namespace platform
