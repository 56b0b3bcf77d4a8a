#pragma once

#include "EntryReader.h"
#include "TimeZone.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace logreader {

/// How an entry is printed: time and text, one JSON object, or its text alone.
enum class Form : std::uint8_t { shown, json, cat };

/// Where an entry stands. `mark` is what its file is, wherever that lies; it and the entry's place in the file are the
/// entry's identity.
struct Origin {
    std::string path;
    std::string mark;
};

/// Gives entries the form in which they are printed.
class EntryWriter final {
  public:
    EntryWriter(Form form, TimeZone zone) : form_(form), zone_(std::move(zone)) {}

    /// Appends the entry and a line end. No moment: text that belongs to no entry.
    void append(std::string& target, const Entry& entry, std::optional<std::chrono::sys_seconds> moment,
                const Origin& origin);
    /// What parts entries that do not follow one another.
    std::string_view gap() const { return form_ == Form::json ? "" : "--\n"; }
    const std::string& timeText(std::chrono::sys_seconds moment);

  private:
    Form form_;
    TimeZone zone_;
    std::chrono::sys_seconds lastMoment_ = std::chrono::sys_seconds::min();
    std::string lastTime_;  ///< the text of `lastMoment_`
};

}  // namespace logreader
