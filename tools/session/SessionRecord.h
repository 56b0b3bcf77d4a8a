// What a page of a session is made of.
#pragma once

#include "detection/AuditMeaning.h"
#include "session/AuditTexts.h"
#include "session/SessionData.h"

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace session {

/// Collects a session's events, and the audit texts of the configuration that the session starts with. With an audit
/// message it keeps what that means, as "tunnel" and "file".
class SessionRecord final {
  public:
    explicit SessionRecord(std::string title) : title_(std::move(title)) {}

    /// Adds a line of a trace. Throws std::runtime_error with the reason when it is not one.
    void addLine(std::string_view line);

    /// Takes the audit texts from this file, whatever the session starts with.
    void useConfiguration(const std::string& file);
    /// Sets the wall clock of a kept trace's start, since 1970.
    void setClock(std::chrono::seconds start) { clock_ = start; }
    /// What the session is about, and how its page was made.
    void setNote(std::string note) { note_ = std::move(note); }
    void addNote(const std::string& note) { note_ += (note_.empty() ? "" : " ") + note; }
    /// The lines come from a log, which does not tell all; `note` says what.
    void setLog(std::string note) {
        setNote(std::move(note));
        isLog_ = true;
    }
    const std::string& title() const { return title_; }
    /// What the wall clock showed, in milliseconds since 1970, if it is known.
    std::optional<std::int64_t> wallAt(std::int64_t time) const;
    /// Whether a configuration is known by whose texts this is a message about remote activity.
    bool isAudit(const std::string& text) const {
        const AuditMeaning meaning =
            texts_.source.empty() ? AuditMeaning() : activity_.meaningOf(text.c_str());
        return meaning.tunnel != Activity::none || meaning.file != Activity::none;
    }

    /// Those of the configuration's texts that stand in a message.
    std::string knownPart(const std::string& message) const;

    /// What no line of a trace tells: where the clock was set, and where the agent was killed.
    SessionData& data() { return data_; }
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
    bool isLog_ = false;
};

}  // namespace session
