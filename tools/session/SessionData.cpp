#include "session/SessionData.h"

#include "common/ShownText.h"

#include <algorithm>
#include <numeric>

namespace session {

namespace {

constexpr std::size_t kLongestCycle = 16;  // steps
constexpr std::size_t kRounds = 3;         // from which on steps count as repeated
constexpr std::size_t kLongestSingle = 4096;
constexpr std::size_t kFurthest = 32;  // bodies before one that may be much the same
constexpr std::size_t kWorth = 24;     // characters in common

std::string line(std::int64_t time, std::string_view body) {
    return "{\"t\":" + tools::secondsText(time) + "," + std::string(body.substr(1));
}

bool isAscii(std::string_view text) {
    return std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 128; });
}

/// The body `at` as it lies in a page: its text, or `[ago, first, middle, last]` where an earlier one is much
/// the same: how many bodies before, how many of its first characters, what differs, how many of its last.
std::string written(const std::vector<const std::string*>& bodies, std::size_t at) {
    const std::string_view body = *bodies[at];
    std::size_t ago = 0, first = 0, last = 0;
    for (std::size_t i = 1; i <= std::min(at, kFurthest); ++i) {
        const std::string_view other = *bodies[at - i];
        const auto common = static_cast<std::size_t>(std::ranges::mismatch(body, other).in1 - body.begin());
        const auto behind = static_cast<std::size_t>(
            std::mismatch(body.rbegin(), body.rend() - static_cast<std::ptrdiff_t>(common), other.rbegin(),
                          other.rend() - static_cast<std::ptrdiff_t>(common))
                .first -
            body.rbegin());
        // Readers count other units than bytes, but for ASCII.
        if (common + behind > std::max(first + last, kWorth) && isAscii(body) && isAscii(other)) {
            ago = i;
            first = common;
            last = behind;
        }
    }
    const std::string text = logreader::scriptText(body.substr(first, body.size() - first - last));
    return ago == 0 ? text
                    : "[" + std::to_string(ago) + "," + std::to_string(first) + "," + text + "," +
                          std::to_string(last) + "]";
}

/// How many milliseconds a round takes.
std::int64_t periodOf(const SessionData::Run& run) {
    return std::accumulate(run.steps.begin(), run.steps.end(), std::int64_t{0},
                           [](std::int64_t sum, const SessionData::Step& step) { return sum + step.delay; });
}

/// The length of the cycle that the last steps went through often enough; 0 when there is none.
std::size_t cycleAtEnd(const std::vector<SessionData::Step>& steps) {
    for (std::size_t length = 1; length <= kLongestCycle && length * kRounds <= steps.size(); ++length) {
        const auto begin = steps.end() - static_cast<std::ptrdiff_t>(length * kRounds);
        if (std::equal(begin, steps.end() - static_cast<std::ptrdiff_t>(length),
                       begin + static_cast<std::ptrdiff_t>(length))) {
            return length;
        }
    }
    return 0;
}

}  // namespace

void SessionData::add(std::int64_t time, std::string_view body) {
    const std::int64_t delay = std::max<std::int64_t>(time - last_, 0);
    last_ += delay;
    ++size_;
    addStep({delay, bodyIndex(body)});
}

std::uint32_t SessionData::bodyIndex(std::string_view body) {
    const auto found = index_.find(body);
    if (found != index_.end()) {
        return found->second;
    }
    const auto added = index_.emplace(body, static_cast<std::uint32_t>(bodies_.size())).first;
    bodies_.push_back(&added->first);
    return added->second;
}

void SessionData::addStep(Step step) {
    if (!repeat_.steps.empty()) {
        if (repeat_.steps[matched_] == step) {
            if (++matched_ == repeat_.steps.size()) {
                matched_ = 0;
                ++repeat_.count;
            }
            return;
        }
        endRepeat();
    }
    single_.push_back(step);
    const std::size_t length = cycleAtEnd(single_);
    if (length > 0) {
        repeat_ = {kRounds, {single_.end() - static_cast<std::ptrdiff_t>(length), single_.end()}};
        single_.resize(single_.size() - length * kRounds);
    }
    if (!single_.empty() && (length > 0 || single_.size() >= kLongestSingle)) {
        endRun({1, std::exchange(single_, {})});
    }
}

void SessionData::keepLast(std::size_t most) {
    if (stored_ <= most + most / 4 || runs_.size() == 1) {
        return;
    }
    auto run = runs_.begin();
    for (; stored_ > most && run + 1 != runs_.end(); ++run) {
        stored_ -= run->steps.size();
        dropped_ += run->count * run->steps.size();
        droppedUntil_ += static_cast<std::int64_t>(run->count) * periodOf(*run);
    }
    runs_.erase(runs_.begin(), run);
    // A text that no event has any more becomes one that stays.
    std::vector<bool> isUsed(bodies_.size());
    const std::string* stays = nullptr;
    forEachRun([&](const Run& one) {
        for (const Step& step : one.steps) {
            isUsed[step.body] = true;
            stays = bodies_[step.body];
        }
    });
    changeBodies([&, at = std::size_t{0}, kept = *stays](const std::string& body) mutable {
        return isUsed[at++] ? body : kept;
    });
}

void SessionData::endRepeat() {
    single_.assign(repeat_.steps.begin(), repeat_.steps.begin() + static_cast<std::ptrdiff_t>(matched_));
    endRun(std::exchange(repeat_, {}));
    matched_ = 0;
}

void SessionData::endRun(Run run) {
    stored_ += run.steps.size();
    runs_.push_back(std::move(run));
}

template <typename Visit>
void SessionData::forEachRun(Visit visit) const {
    std::for_each(runs_.begin(), runs_.end(), visit);
    if (!repeat_.steps.empty()) {
        visit(repeat_);
        if (matched_ > 0) {
            visit(Run{
                1, {repeat_.steps.begin(), repeat_.steps.begin() + static_cast<std::ptrdiff_t>(matched_)}});
        }
    }
    if (!single_.empty()) {
        visit(Run{1, single_});
    }
}

std::string SessionData::marks() const {
    const auto listed = [](const auto& pairs) {
        std::string list;
        for (const auto& [first, second] : pairs) {
            list.append(list.empty() ? "[" : ",[").append(std::to_string(first)).append(",");
            list.append(std::to_string(second)).append("]");
        }
        return "[" + list + "]";
    };
    return "\"clock\":" + listed(clock_) + ",\"kills\":" + listed(kills_);
}

void SessionData::appendJson(std::string& target) const {
    target.append("\"events\":").append(std::to_string(size_)).append(",").append(marks());
    target.append(",\"dropped\":[").append(std::to_string(dropped_)).append(",");
    target.append(std::to_string(droppedUntil_)).append("]");
    target += ",\n\"bodies\":[";
    const char* separator = "\n";
    for (std::size_t at = 0; at < bodies_.size(); ++at) {
        target.append(separator).append(written(bodies_, at));
        separator = ",\n";
    }
    target += "],\n\"runs\":[";
    separator = "\n";
    forEachRun([&](const Run& run) {
        target.append(separator).append("[").append(std::to_string(run.count));
        for (const Step& step : run.steps) {
            target.append(",")
                .append(std::to_string(step.delay))
                .append(",")
                .append(std::to_string(step.body));
        }
        target += ']';
        separator = ",\n";
    });
    target += ']';
}

std::optional<std::int64_t> SessionData::wallAt(std::int64_t time) const {
    const auto later =
        std::find_if(clock_.begin(), clock_.end(), [time](const auto& one) { return one.first > time; });
    return clock_.empty() ? std::nullopt
                          : std::optional(time + (later == clock_.begin() ? later : later - 1)->second);
}

void SessionData::forEach(const std::function<void(std::int64_t, const std::string&)>& visit) const {
    std::int64_t time = droppedUntil_;
    forEachRun([&](const Run& run) {
        for (std::uint64_t round = 0; round < run.count; ++round) {
            for (const Step& step : run.steps) {
                time += step.delay;
                visit(time, *bodies_[step.body]);
            }
        }
    });
}

void SessionData::changeBodies(const std::function<std::string(const std::string&)>& change) {
    decltype(index_) index;
    std::vector<std::uint32_t> places;  // bodies that were different may be the same now
    const std::vector<const std::string*> bodies = std::exchange(bodies_, {});
    std::swap(index, index_);
    places.reserve(bodies.size());
    for (const std::string* body : bodies) {
        places.push_back(bodyIndex(change(*body)));
    }
    const auto place = [&places](std::vector<Step>& steps) {
        for (Step& step : steps) {
            step.body = places[step.body];
        }
    };
    for (Run& run : runs_) {
        place(run.steps);
    }
    place(repeat_.steps);
    place(single_);
}

std::vector<std::string> SessionData::lines(std::uint64_t first, std::size_t limit) const {
    std::vector<std::string> found;
    std::uint64_t number = dropped_;    // of the run's first event
    std::int64_t time = droppedUntil_;  // before the run
    forEachRun([&](const Run& run) {
        const std::int64_t period = periodOf(run);
        const std::uint64_t behind = number + run.count * run.steps.size();
        if (found.size() < limit && first < behind) {
            const std::uint64_t round = first > number ? (first - number) / run.steps.size() : 0;
            std::uint64_t at = number + round * run.steps.size();
            std::int64_t now = time + static_cast<std::int64_t>(round) * period;
            for (std::uint64_t left = run.count - round; left > 0 && found.size() < limit; --left) {
                for (const Step& step : run.steps) {
                    now += step.delay;
                    if (at++ >= first && found.size() < limit) {
                        found.push_back(line(now, *bodies_[step.body]));
                    }
                }
            }
        }
        number = behind;
        time += static_cast<std::int64_t>(run.count) * period;
    });
    return found;
}

}  // namespace session
