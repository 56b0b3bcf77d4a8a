// A session's events, small enough to lie in a page.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace session {

/// Keeps events as the steps from one to the next: how many milliseconds later, and which text of all that
/// occurred. Steps that repeat, as those of polling do for days, are kept once with their number, so a year
/// of polls takes no more room than a minute of them.
class SessionData final {
  public:
    struct Step {
        std::int64_t delay = 0;  ///< in milliseconds since the step before
        std::uint32_t body = 0;  ///< index into `bodies`

        bool operator==(const Step&) const = default;
    };
    struct Run {
        std::uint64_t count = 1;
        std::vector<Step> steps;  ///< these, `count` times over
    };

    SessionData() = default;
    SessionData(const SessionData&) = delete;
    SessionData& operator=(const SessionData&) = delete;

    /// Adds an event at `time` (milliseconds since the start; a time before the last one counts as that).
    /// `body` is its JSON object without the time.
    void add(std::int64_t time, std::string_view body);
    /// The wall clock, in milliseconds since 1970, from `time` on.
    void setClock(std::int64_t time, std::int64_t wall) { clock_.emplace_back(time, wall - time); }
    bool hasClock() const { return !clock_.empty(); }
    /// What the wall clock showed at `time`, if it is known.
    std::optional<std::int64_t> wallAt(std::int64_t time) const;
    /// The agent was killed, which may be no event.
    void addKill(std::int64_t time) { kills_.emplace_back(time, size_); }

    /// How many events there were, those that were dropped among them.
    std::uint64_t size() const { return size_; }
    std::uint64_t dropped() const { return dropped_; }
    /// Keeps about `most` events, those of a repeated step counting once: where there are a quarter more, the oldest go,
    /// and with them the texts that only they had.
    void keepLast(std::size_t most);
    bool knows(std::string_view body) const { return index_.contains(body); }

    /// Appends the members "bodies", "runs", "events", "dropped", "clock" and "kills" of a JSON object. No "<" stands in them, so
    /// they may lie in a script element whatever the texts hold.
    void appendJson(std::string& target) const;

    /// The members "clock" and "kills" alone.
    std::string marks() const;

    /// All events that are kept, in order. A body is the same object each time it comes.
    void forEach(const std::function<void(std::int64_t time, const std::string& body)>& visit) const;
    const std::vector<const std::string*>& bodies() const { return bodies_; }
    /// Replaces each body by what `change` makes of it.
    void changeBodies(const std::function<std::string(const std::string& body)>& change);

    /// The lines of the trace from the event number `first` on, which is not dropped, at most `limit` of them.
    std::vector<std::string> lines(std::uint64_t first, std::size_t limit) const;

  private:
    struct Hash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
    };

    std::uint32_t bodyIndex(std::string_view body);
    void addStep(Step step);
    void endRepeat();
    void endRun(Run run);
    template <typename Visit>
    void forEachRun(Visit visit) const;

    std::unordered_map<std::string, std::uint32_t, Hash, std::equal_to<>> index_;
    std::vector<const std::string*> bodies_;  ///< keys of the index, which stay where they are
    std::vector<Run> runs_;                   ///< those that are complete
    Run repeat_;                              ///< the one that may still go on, if it has steps
    std::size_t matched_ = 0;                 ///< steps of its next round that have come
    std::vector<Step> single_;                ///< steps that repeat nothing (yet)
    std::int64_t last_ = 0;
    std::uint64_t size_ = 0;
    std::size_t stored_ = 0;  ///< steps in `runs_`
    std::uint64_t dropped_ = 0;
    std::int64_t droppedUntil_ = 0;  ///< the time of the last event that was dropped
    /// Time, and how far the wall clock is ahead of it from there on.
    std::vector<std::pair<std::int64_t, std::int64_t>> clock_;
    /// Time, and the number of the next event.
    std::vector<std::pair<std::int64_t, std::uint64_t>> kills_;
};

}  // namespace session
