// Plays a scenario.
#pragma once

#include "sim/scenario/Scenario.h"

namespace sim {

class Clock;
class Input;
class OrderQueue;
class Scheduler;
class SimulatedAgent;
class TraceFile;

/// Brings a scenario's actions, and typed ones, to the agent at their times.
class Simulation final {
  public:
    /// `input` is null when nothing can be typed. All parts must outlive the simulation.
    Simulation(const Scenario& scenario, Clock& clock, Scheduler& scheduler, SimulatedAgent& agent,
               TraceFile& trace, Input* input)
        : scenario_(scenario),
          clock_(clock),
          scheduler_(scheduler),
          agent_(agent),
          trace_(trace),
          input_(input) {}

    /// Performs what clients order, too, and goes on until it is interrupted. Only with an input.
    void takeOrdersFrom(OrderQueue& orders) { orders_ = &orders; }

    /// Runs to the end. False when a typed line could not be used (its message went to standard error).
    /// Throws std::runtime_error ("FILE:LINE: reason") when a line of the scenario, or the trace, could not.
    bool run();

  private:
    /// False when the simulation ends with this action.
    bool performTyped(const std::string& text);
    void perform(const Action& action);
    bool inputIsOpen() const;

    const Scenario& scenario_;
    Clock& clock_;
    Scheduler& scheduler_;
    SimulatedAgent& agent_;
    TraceFile& trace_;
    Input* input_;
    OrderQueue* orders_ = nullptr;
    int typedLines_ = 0;
    bool typedLineFailed_ = false;
};

}  // namespace sim
