// A session that goes on, for clients to look at.
#pragma once

#include "lib/Enterprise.h"
#include "session/SessionRecord.h"
#include "sim/input/Bell.h"
#include "sim/scenario/StartLines.h"
#include "sim/time/Clock.h"
#include "sim/trace/Event.h"

#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace sim {

/// Collects events on the thread that has the turn and shows them to any thread.
class LiveSession final {
  public:
    /// A profile that the enterprise has accepted.
    struct Profile {
        std::string member;
        agent::NamedValues properties;
    };
    struct News {
        std::uint64_t first;             ///< the number of the first line
        std::vector<std::string> lines;  ///< of the trace, without their ends
        bool isOver = false;
        std::string marks;  ///< what no line tells: where the clock was set, and where the agent was killed
    };

    /// `now` tells the time of the session, on any thread.
    LiveSession(session::SessionRecord& record, std::function<Instant()> now)
        : record_(record), now_(std::move(now)) {}

    void onEvent(const Event& event) noexcept;
    /// No more events will come.
    void close();

    /// The page as it is now.
    std::string page() const;
    /// Events from number `first` on, or from the first that is still there.
    News news(std::uint64_t first) const;
    /// Rings at each event, and at the end.
    Bell& bell() { return bell_; }
    Instant now() const { return now_(); }
    std::optional<Profile> profile() const { return copyOf(profile_); }
    std::vector<std::string> startLines() const { return copyOf(starts_.lines()); }

  private:
    static constexpr std::size_t kMostLines = 100;      ///< at once
    static constexpr std::size_t kMostEvents = 100000;  ///< older ones are dropped: sessions go on for months

    template <typename Value>
    Value copyOf(const Value& value) const {
        const std::lock_guard lock(mutex_);
        return value;
    }

    session::SessionRecord& record_;
    std::function<Instant()> now_;
    Bell bell_;
    mutable std::mutex mutex_;  ///< guards everything below, and the record
    bool over_ = false;
    std::string member_;
    std::optional<Profile> profile_;
    StartLines starts_;
};

}  // namespace sim
