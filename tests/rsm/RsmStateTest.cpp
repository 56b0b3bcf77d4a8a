// The RSM state by itself: whole sessions as rows, without a thread or a clock.
#include "controller/RsmState.h"
#include "support/Rows.h"

#include <sstream>
#include <string>

#include <gtest/gtest.h>

namespace {

/// Walks a state through a session as the polling thread would, and writes down what comes of it. The present
/// starts at 1000. Words of a session:
///   connect:MIN,RATE  disconnect  schedule:RATE,START,END,MIN  on  off  wait (one look of the waiting phase)
///   begin (a polling phase begins)  N (so many passes)  all (passes until the end)  t=N (sets the present)
/// What is written: "." a poll, "s" a save, "[mode grace rate]" a report, "!" the end.
class Walk final {
  public:
    std::string through(const std::string& session) {
        std::istringstream words(session);
        for (std::string word; words >> word;) {
            take(word);
        }
        return written_;
    }

  private:
    void take(const std::string& word) {
        const std::string name = word.substr(0, word.find(':'));
        std::istringstream values(word.substr(std::min(word.size(), name.size() + 1)));
        const auto next = [&values] {
            std::int64_t value = 0;
            values >> value;
            values.ignore();
            return value;
        };
        const auto nextInt = [&next] { return static_cast<std::int32_t>(next()); };
        if (name == "connect") {
            const auto minutes = nextInt();
            state_.forcePoll(minutes, nextInt(), now_);
        } else if (name == "disconnect") {
            written_ += std::to_string(state_.disconnect(now_));
        } else if (name == "schedule") {
            const auto rate = nextInt();
            const auto start = next();
            const auto end = next();
            state_.scheduleDelayedProfile(rate, start, end, nextInt());
        } else if (name == "on" || name == "off") {
            report(state_.setRemoteActivity(name == "on", now_));
        } else if (name == "wait") {
            report(state_.startWhenDue(now_));
        } else if (name == "begin") {
            state_.beginPolling();
        } else if (name == "all") {
            for (int i = 0; i < 1000 && pass(); ++i) {
            }
        } else if (name.starts_with("t=")) {
            now_ = std::stoll(name.substr(2));
        } else {
            for (int i = std::stoi(name); i > 0 && pass(); --i) {
            }
        }
    }

    bool pass() {
        if (state_.endWhenOver(true, now_)) {
            report(true);
            written_ += state_.isDone() ? "!" : "w";
            return false;
        }
        apply(&RsmState::restartOrFirstPass);
        now_ += state_.pollingRate;
        written_ += ".";
        for (const RsmState::Step step : RsmState::kAfterPoll) {
            apply(step);
        }
        return true;
    }

    void apply(RsmState::Step step) {
        const RsmState::Effects effects = (state_.*step)(now_);
        report(effects.report);
        written_ += effects.save ? "s" : "";
    }

    void report(bool due) {
        if (due) {
            std::ostringstream text;
            text << '[' << state_.rsmMode << ' ' << state_.gracePeriod << ' ' << state_.pollingRate << ']';
            written_ += text.str();
        }
    }

    RsmState state_;
    std::int64_t now_ = 1000;
    std::string written_;
};

struct Row {
    support::RowName name;
    const char* session;
    const char* written;
};

const support::Rows<Row> rows(
    "RsmState/Sessions",
    {
        {"runs out", "connect:1,10 begin all", "s......[0 0 0]!"},
        {"rate that divides no minute", "connect:2,45 begin all", "s..[0 0 0]!"},
        {"rate above a minute", "connect:10,90 begin all", "[0 0 0]!"},
        {"rate below one", "connect:10,0 begin all", "[0 0 0]!"},
        {"negative period", "connect:-1,10 begin all", "[0 0 0]!"},
        {"second connect counts afresh", "connect:1,20 begin 2 connect:1,20 all", "s..s...[0 0 0]!"},
        {"connect after the last poll", "connect:1,20 begin 3 connect:1,30 all", "s...s..[0 0 0]!"},
        {"disconnect polls once", "connect:1,20 begin 1 disconnect all", "s.1[0 0 0]!"},
        {"disconnect in idle", "disconnect", "0"},
        {"disconnect in activity", "connect:1,20 begin 1 on disconnect 1", "s.[2 1 20]2.s"},
        {"activity holds and is followed by its grace", "connect:1,20 begin 1 on 9 off all",
         "s.[2 1 20].s.........[1 1 20]s..[0 0 0]!"},
        {"activity twice is entered once", "connect:1,20 begin on on", "[2 1 20]"},
        {"activity in idle changes no mode", "on connect:1,20 begin 5 off all", "s......[1 1 20]s..[0 0 0]!"},
        {"activity after the last poll polls on in grace", "connect:1,20 begin 3 on 2 off all",
         "s.....[0 0 0]!"},
        {"connect in activity keeps the mode", "connect:1,20 begin 1 on 1 connect:2,30 1 off all",
         "s.[2 1 20].ss..[1 2 30]s...[0 0 0]!"},
        {"schedule waits for its time", "schedule:20,1100,1160,7 wait t=1099 wait t=1100 wait begin all",
         "[1 1 20]s...[0 0 0]!"},
        {"due schedule goes before a connect", "schedule:20,1100,1160,7 connect:5,10 t=1101 wait",
         "[1 1 20]"},
        {"schedule takes over a connect", "connect:1,20 schedule:30,1030,1090,7 begin all",
         "s..[1 1 30]s.[0 0 0]!"},
        {"schedule after a connect is waited for", "connect:1,20 schedule:30,2000,2060,7 begin all",
         "s...[0 0 0]w"},
    },
    [](const Row& row) { EXPECT_EQ(Walk().through(row.session), row.written) << row.session; });

/// It begins on another thread, so between any two steps behind the last poll.
TEST(RsmState, ActivityThatBeginsAtTheLastPollIsFollowedByItsGrace) {
    for (const RsmState::Step before : {&RsmState::takeUpActivity, &RsmState::endActivity,
                                        &RsmState::holdForActivity, &RsmState::markLastPoll}) {
        RsmState state;
        state.forcePoll(1, 30, 1000);
        int poll = 0;
        while (!state.endWhenOver(true, 1000)) {
            ++poll;
            state.restartOrFirstPass(1000);
            for (const RsmState::Step step : RsmState::kAfterPoll) {
                if (poll == 2 && step == before) {
                    state.setRemoteActivity(true, 1000);
                }
                (state.*step)(1000);
            }
            if (poll == 4) {
                EXPECT_EQ(state.rsmMode, rsm::kForcePollActivity);
                state.setRemoteActivity(false, 1000);
            }
            if (poll == 5) {
                EXPECT_EQ(state.rsmMode, rsm::kForcePollGrace);
                EXPECT_EQ(state.gracePeriod, 1.0);
            }
        }
        EXPECT_EQ(poll, 6) << "two, two in activity, two of its grace";
    }
}

TEST(RsmState, TakesOverWithAMode) {
    RsmState state;
    state.scheduleDelayedProfile(30, 7200, 9000, 5);
    state.convertDelayedToNormal(rsm::kForcePollActivity, 7300);
    EXPECT_EQ(state.rsmMode, 2);
    EXPECT_EQ(state.rsmStartTime, 7200);
    EXPECT_EQ(state.modeStartTime, 7300);
    EXPECT_EQ(state.gracePeriod, 30.0);
    EXPECT_EQ(state.activityGracePeriod, 5);
    EXPECT_EQ(state.delayedEndTime, 9000);
    state.convertDelayedToNormal(7, 7400);
    EXPECT_EQ(state.rsmMode, 0);
    EXPECT_EQ(state.rsmStartTime, 0);
}

}  // namespace
