// What a page of a session is made of.
#pragma once

#include "detection/AuditMeaning.h"
#include "sim/EventListener.h"
#include "sim/report/AuditTexts.h"
#include "sim/report/SessionData.h"

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace sim {

/// Collects a session's events, and the audit texts of the configuration that the session starts with. With an audit
/// message it keeps what that means, as "tunnel" and "file".
class SessionRecord final : public EventListener {
  public:
    explicit SessionRecord(std::string title) : title_(std::move(title)) {}

    void onEvent(const Event& event) noexcept override;
    /// Adds a line of a kept trace. Throws std::runtime_error with the reason when it is not one.
    void addLine(std::string_view line);

    /// Takes the audit texts from this file, whatever the session starts with.
    void useConfiguration(const std::string& file);
    /// Sets the wall clock of a kept trace's start, since 1970.
    void setClock(std::chrono::seconds start) { clock_ = start; }
    /// What the session is about.
    void setNote(std::string note) { note_ = std::move(note); }

    const SessionData& data() const { return data_; }
    /// The page's data as a JSON object.
    std::string json() const;

  private:
    void useTexts(const std::string& file);
    /// Looks at a call that has come back: a configuration may be found in it.
    void noteCall(const std::string& verb, bool succeeded);
    AuditMeaning meaningOf(const std::string& verb) const;

    std::string title_;
    std::string note_;
    SessionData data_;
    AuditTexts texts_;
    ActivityTexts activity_;                          ///< of these
    std::optional<std::chrono::milliseconds> clock_;  ///< of a kept trace, which has no wall clock
    bool textsAreFixed_ = false;
};

}  // namespace sim
