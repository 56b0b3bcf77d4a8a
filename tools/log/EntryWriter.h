#pragma once

#include "EntryReader.h"
#include "TimeZone.h"

#include <chrono>
#include <optional>
#include <string>

namespace logreader {

/// Gives entries the form in which they are printed.
class EntryWriter final {
  public:
    EntryWriter(bool json, TimeZone zone) : json_(json), zone_(std::move(zone)) {}

    /// Appends the entry of the file `path` and a line end. No moment: text that belongs to no entry.
    void append(std::string& target, const Entry& entry, std::optional<std::chrono::sys_seconds> moment,
                const std::string& path);

  private:
    const std::string& timeText(std::chrono::sys_seconds moment);

    bool json_;
    TimeZone zone_;
    std::chrono::sys_seconds lastMoment_ = std::chrono::sys_seconds::min();
    std::string lastTime_;  ///< the text of `lastMoment_`
};

}  // namespace logreader
