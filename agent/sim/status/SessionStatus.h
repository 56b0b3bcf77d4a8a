// What RSM does now, as far as its agent has seen it.
#pragma once

#include "EventListener.h"

#include <cstdint>
#include <mutex>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

namespace sim {

/// Follows a session's events. Any thread may ask.
class SessionStatus final : public EventListener {
  public:
    void onEvent(const Event& event) noexcept override;

    /// One sentence, and details below it; `now` in seconds since 1970.
    std::string text(std::int64_t now) const;
    /// The same as a JSON object.
    std::string json(std::int64_t now) const;

  private:
    enum class Agent : std::uint8_t { notStarted, runs, stopped, killed };

    /// A poll count that goes from 0 to a limit, as the polling thread keeps it.
    struct Stretch {
        std::string mode = "NOT_ACTIVE";
        std::int64_t since = 0;
        int minutes = 0;
        int rate = 0;
        std::int64_t limit = 0;  ///< polls; without remote activity
        std::int64_t polls = 0;
    };
    struct Report {
        std::int64_t at = 0;
        bool accepted = false;
        nlohmann::ordered_json properties;
    };
    struct Schedule {
        std::int64_t start = 0;
        int minutes = 0;
        int rate = 0;
    };

    void noteCall(const Event& event, std::int64_t at);
    void noteReport(const Event& event, std::int64_t at);
    bool runs() const;
    std::int64_t pollsLeft() const;
    std::int64_t until() const;
    std::string sentence(std::int64_t now) const;
    std::string startText(std::int64_t now) const;
    std::string scheduleText() const;

    mutable std::mutex mutex_;  ///< of everything below
    Agent agent_ = Agent::notStarted;
    std::int64_t changedAt_ = 0;  ///< when the agent was killed or stopped
    bool maybeKilled_ = false;    ///< a thread was destroyed, and no stop has come back since
    bool ending_ = false;         ///< a disconnect was accepted
    Stretch stretch_;
    std::int64_t activitySince_ = 0;
    std::int64_t polls_ = 0;
    std::optional<std::int64_t> lastPoll_;
    std::optional<Schedule> schedule_;
    std::optional<Report> report_;
    std::string resumePath_;
    std::string schedulePath_;
};

}  // namespace sim
