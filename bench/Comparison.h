// Measuring of one piece of work against another in the same run, on a machine that others use too.
#pragma once

#include <functional>

namespace bench {

/// One round's measurement: the nanoseconds of one operation.
using Round = std::function<double()>;

struct Quartiles {
    double low = 0;
    double median = 0;
    double high = 0;
};

struct Comparison {
    double subject = 0;    ///< median, in nanoseconds
    double reference = 0;  ///< likewise
    Quartiles ratio;       ///< of the rounds' own ratios subject / reference
    Quartiles difference;  ///< of the rounds' own differences, in nanoseconds
};

/// Runs the two in turn, the order changing from round to round. What disturbs the machine for longer than a
/// round disturbs both, and a round that only one of them was disturbed in counts no more than any other.
Comparison compare(const Round& subject, const Round& reference, int rounds);

enum class Time {
    OfTheClock,
    OfTheProcessors  ///< spent by all threads of the process: what waits costs nothing
};

/// A round of `operations` calls of `work`, on each of `threads` threads.
Round roundOf(std::function<void()> work, int operations, int threads = 1, Time time = Time::OfTheClock);

}  // namespace bench
