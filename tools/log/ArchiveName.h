#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace logreader {

/// What the name of an archive says, as kelp-logs2026_3_1_10_5_9.xml. Nothing stands between the second and the
/// collision counter: "12" is second 12, or second 1 and counter 2.
struct ArchiveName {
    struct Reading {
        int second = 0;
        std::uint32_t counter = 0;
    };

    std::string_view base;              ///< what stands before the date
    std::string_view stem;              ///< the name without the ending of a compressed file
    std::chrono::local_seconds minute;  ///< in which the log file was full, as the device's clock showed it
    std::array<Reading, 2> readings;    ///< the likelier one first
    std::size_t readingCount = 0;
};

/// Nothing when a file of this name (no path) is not an archive.
std::optional<ArchiveName> readArchiveName(std::string_view name);

}  // namespace logreader
