// What RSM does now, as far as its agent has seen it.
#pragma once

#include "sim/status/RsmFollower.h"

#include <cstdint>
#include <mutex>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

namespace sim {

/// Follows a session's events. Any thread may ask.
class SessionStatus final {
  public:
    void onEvent(const Event& event) noexcept;

    /// One sentence, and details below it; `now` in seconds since 1970.
    std::string text(std::int64_t now) const;
    /// The same as a JSON object.
    std::string json(std::int64_t now) const;
    /// The same in Prometheus' text format.
    std::string metrics(std::int64_t now) const;

  private:
    enum class Agent : std::uint8_t { notStarted, runs, stopped, killed };

    struct Report {
        std::int64_t at = 0;
        bool accepted = false;
        nlohmann::ordered_json properties;
    };

    /// The sentence and the numbers in it, all of one moment.
    struct Answer {
        std::string sentence;
        std::optional<RsmFollower::Outlook> outlook;
    };

    Answer answer(std::int64_t now) const;
    std::string sentence(const std::optional<RsmFollower::Outlook>& outlook, std::int64_t now) const;
    bool isPolling() const;
    std::string startText(std::int64_t now) const;
    std::string scheduleText() const;

    mutable std::mutex mutex_;  ///< guards everything below
    RsmFollower rsm_;
    Agent agent_ = Agent::notStarted;
    std::int64_t changedAt_ = 0;  ///< when the agent was killed or stopped
    std::int64_t polls_ = 0;
    std::optional<std::int64_t> lastPoll_;
    std::optional<Report> report_;
};

}  // namespace sim
