// Tries every order of turns.
#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <string>

namespace agent {
class Thread;
}

/// Where an order of turns leaves the ordinary one, in which a thread keeps its turn until it waits: at which
/// choice, and who of those that can goes on there. As text "57:1 80:2".
using Turns = std::map<std::size_t, std::size_t>;

Turns parseTurns(const std::string& text);

/// Plays something in a process of its own once for every order of turns with so many preemptions at most.
/// That a thread waits or ends gives the turn away and is none: all who can go on are tried.
class Explorer final {
  public:
    /// What goes wrong in the calling process, which then ends; empty when nothing does.
    using Play = std::function<std::string()>;

    /// A thread of the name `intruder` comes in at each point, which is the first preemption; beside it whatever
    /// leaves the ordinary order counts as one. With `only`, no
    /// other order than that is played, and told in detail on standard error.
    Explorer(int preemptions, const char* intruder, const Turns* only)
        : preemptions_(preemptions), intruder_(intruder), only_(only) {}

    /// The first order found that goes wrong, with what did; empty when there is none.
    std::string explore(const Play& play);
    std::size_t runs() const { return runs_; }

    /// From now on, in the process of a play, the scheduler's turns are chosen, or not any more.
    static void begin();
    static void end();

  private:
    std::string run(const Turns& turns, const Play& play);

    int preemptions_;
    const char* intruder_;
    const Turns* only_;
    std::size_t runs_ = 0;
};
