#pragma once

#include <chrono>
#include <string>
#include <vector>

namespace logreader {

/// How a place's clocks stand against UTC, from 1970 to 2100. Made from what the C library says, since that
/// is what the device's logger asks, too.
class TimeZone final {
  public:
    /// The zone of this process: `TZ`, or the machine's.
    static TimeZone local();
    /// A zone by its name (`Europe/Berlin`), as a distance (`+02:00`, east of Greenwich), as `UTC`, or in the
    /// form of POSIX (`CET-1CEST,M3.5.0,M10.5.0/3`). Throws UsageError. Changes `TZ` for the time of the
    /// call: only while the process has one thread.
    static TimeZone named(const std::string& name);

    std::chrono::seconds offsetAt(std::chrono::sys_seconds moment) const;
    std::chrono::local_seconds clockAt(std::chrono::sys_seconds moment) const {
        return std::chrono::local_seconds(moment.time_since_epoch() + offsetAt(moment));
    }
    /// When the clocks showed this. In the hour that comes twice in autumn: the first time that is not before
    /// `notBefore`, and the second one when both are. For what was left out in spring: as if the clocks had
    /// not been put forward yet.
    std::chrono::sys_seconds momentOf(std::chrono::local_seconds clock,
                                      std::chrono::sys_seconds notBefore) const;

  private:
    struct Period {
        std::chrono::sys_seconds begin;
        std::chrono::seconds offset;
    };

    TimeZone();
    std::vector<Period>::const_iterator periodAt(std::chrono::sys_seconds moment) const;

    std::vector<Period> periods_;
    // The last answer of momentOf holds for all clock times between these.
    mutable std::chrono::local_seconds sameFrom_ = std::chrono::local_seconds::max();
    mutable std::chrono::local_seconds sameUntil_ = std::chrono::local_seconds::min();
    mutable std::chrono::seconds sameOffset_{0};
};

}  // namespace logreader
