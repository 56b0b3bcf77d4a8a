#pragma once

#include <cstdint>

/// How often something happened in writing the log file that has to be told. Who writes holds locks, so it is
/// told by whoever called for the write, with `LogFileWriter::report`, once it holds none.
struct Notices {
    std::uint32_t failedRenames = 0;
    std::uint32_t abandonedWaits = 0;
    std::uint32_t failedReleases = 0;
    std::uint32_t heldLogs = 0;

    Notices& operator+=(const Notices& other) noexcept {
        failedRenames += other.failedRenames;
        abandonedWaits += other.abandonedWaits;
        failedReleases += other.failedReleases;
        heldLogs += other.heldLogs;
        return *this;
    }
};
