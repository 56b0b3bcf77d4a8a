// What comes in while a simulation runs in real time.
#pragma once

#include "sim/input/Bell.h"

#include <chrono>
#include <deque>
#include <string>
#include <string_view>

namespace sim {

class Terminal;

/// The lines typed on a descriptor, and the request to stop: SIGINT, SIGTERM or SIGHUP. Used by one thread at a time.
class Input final {
  public:
    /// Reads `descriptor`, which stays the caller's, and watches the signals from now on; a second SIGINT ends
    /// the process at once. `terminal`, which must outlive the input, edits what is typed there, and SIGINT
    /// clears a line of it first; it is null when nobody types.
    Input(int descriptor, Terminal* terminal);
    Input(const Input&) = delete;
    Input& operator=(const Input&) = delete;
    ~Input();

    /// Lets `wait` come back when the bell rings, which must outlive the input.
    void alsoHear(const Bell& bell) { other_ = bell.descriptor(); }

    /// Waits at most `time`; true when a line is there or the state below has changed.
    bool wait(std::chrono::microseconds time);

    /// Whether lines are there or may still come.
    bool isOpen() const { return open_ || !lines_.empty(); }
    bool stopRequested() const { return stopRequested_; }
    bool hasLine() const { return !lines_.empty(); }
    std::string takeLine();
    /// Where a person types, or null.
    Terminal* terminal() const { return terminal_; }

  private:
    void read();
    /// Makes lines of what came in.
    void take(std::string_view bytes);
    /// Nothing more comes: what has no line end is the last line.
    void end();

    int descriptor_;
    Terminal* terminal_;
    int other_ = -1;
    bool open_ = true;
    bool stopRequested_ = false;
    std::string partial_;
    std::deque<std::string> lines_;
};

}  // namespace sim
