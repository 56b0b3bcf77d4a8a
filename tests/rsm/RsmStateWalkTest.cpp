// Random walks over all that can be done with an RSM state, each step of the polling thread by itself: they reach
// the transitions that the head of RsmState.h lists, and no others.
#include "controller/RsmState.h"

#include <fstream>
#include <random>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using Transitions = std::set<std::string>;

std::vector<std::string> words(const std::string& text) {
    const std::regex word("[A-Za-z]+(?=,|$)");
    std::vector<std::string> found;
    for (std::sregex_iterator at(text.begin(), text.end(), word), end; at != end; ++at) {
        found.push_back(at->str());
    }
    return found;
}

Transitions listed() {
    Transitions all;
    std::ifstream header(RSM_STATE);
    const std::regex row("//   (\\S.*?) {2,}(\\S.*?) {2,}(\\S.*)");
    bool inTable = false;
    std::smatch cells;
    for (std::string line; std::getline(header, line);) {
        if (inTable && std::regex_match(line, cells, row)) {
            for (const std::string& from : words(cells[1])) {
                for (const std::string& to : words(cells[2])) {
                    for (const std::string& by : words(cells[3])) {
                        all.insert(from + " " + to + " " + by);
                    }
                }
            }
        } else {
            inTable = line.find("From ") != std::string::npos;
        }
    }
    return all;
}

const char* nameOf(RsmState::State state) {
    static const char* const names[] = {
        "Idle", "Waiting", "Grace", "GraceWithActivity", "Activity", "Ending", "EndingWithActivity"};
    return names[static_cast<int>(state)];
}

/// Orders at any time, and the polling thread as `ForcePollingTask` has it.
class RandomWalk final {
  public:
    explicit RandomWalk(std::mt19937& random) : random_(random) {}

    void step(Transitions& walked) {
        const char* const from = nameOf(state_.state());
        const std::string by = change();
        EXPECT_TRUE(state_.isConsistent()) << nameOf(state_.state()) << " by " << by;
        if (const char* const to = nameOf(state_.state()); to != from) {
            walked.insert(std::string(from) + " " + to + " " + by);
        }
    }

  private:
    enum Phase { None, Looks, Polls, Passes, Steps };

    template <typename... Values>
    std::int32_t oneOf(Values... values) {
        const std::int32_t all[] = {values...};
        return all[random_() % sizeof...(values)];
    }
    void order() {
        if (phase_ == None) {
            phase_ = Looks;
            slept_ = false;
        }
    }

    std::string change() {
        switch (oneOf(0, 1, 2, 3, 4, 5, 6, 6, 6, 6, 6, 6, 6)) {
            case 0:
                state_.forcePoll(oneOf(-1, 0, 1, 2), oneOf(-5, 0, 10, 30, 45, 90), now_);
                order();
                return "forcePoll";
            case 1: {
                const std::int64_t start = now_ + oneOf(1, 30, 60);
                state_.scheduleDelayedProfile(oneOf(10, 30, 90), start, start + oneOf(-30, 0, 60, 120),
                                              oneOf(0, 1));
                order();
                return "scheduleDelayedProfile";
            }
            case 2:
                if (phase_ != None) {
                    state_.disconnect(now_);
                }
                return "disconnect";
            case 3:
                state_.setRemoteActivity(oneOf(0, 1) == 1, now_);
                return "setRemoteActivity";
            case 4:
                now_ += oneOf(1, 20, 60);
                return "nothing";
            case 5:
                if (phase_ != None && !state_.restartRequested && oneOf(0, 0, 0, 0, 1) == 1) {
                    state_.breakOff(now_);
                    phase_ = None;
                }
                return "breakOff";
            default:
                return poll();
        }
    }

    std::string poll() {
        switch (phase_) {
            case None:
                return "nothing";
            case Looks: {
                const bool waiting = state_.isWaiting();
                const bool started = (waiting || slept_) && state_.startWhenDue(now_);
                slept_ = true;
                if (started || !waiting) {
                    state_.beginPolling();
                    phase_ = Polls;
                }
                return "startWhenDue";
            }
            case Polls:
                phase_ = Passes;
                if (state_.endWhenOver(true, now_)) {
                    phase_ = state_.isDone() ? None : Looks;
                    slept_ = false;
                }
                return "endWhenOver";
            case Passes:
                state_.restartOrFirstPass(now_);
                phase_ = Steps;
                next_ = 0;
                return "restartOrFirstPass";
            default:
                static const char* const names[] = {"takeUpActivity",     "endActivity",
                                                    "holdForActivity",    "markLastPoll",
                                                    "takeOverDueProfile", "takeOverDueProfileAfterActivity",
                                                    "countPoll"};
                (state_.*RsmState::kAfterPoll[next_])(now_);
                phase_ = next_ + 1 == std::size(names) ? Polls : Steps;
                return names[next_++];
        }
    }

    std::mt19937& random_;
    RsmState state_;
    std::int64_t now_ = 1000;
    Phase phase_ = None;
    bool slept_ = false;
    std::size_t next_ = 0;
};

TEST(RsmState, ItsPictureIsWhole) {
    std::mt19937 random(20260301);
    Transitions walked;
    for (int walks = 0; walks < 4000 && !HasFailure(); ++walks) {
        RandomWalk walk(random);
        for (int steps = 0; steps < 100; ++steps) {
            walk.step(walked);
        }
    }
    EXPECT_EQ(walked, listed());
}

}  // namespace
