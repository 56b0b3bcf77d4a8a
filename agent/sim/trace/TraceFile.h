// Where the events go.
#pragma once

#include "sim/trace/BriefTimeline.h"
#include "sim/trace/Event.h"

#include <mutex>
#include <string>

namespace sim {

class Terminal;

/// Writes events to a descriptor. A failed write is kept and reported by `check`, since events come up
/// between frames that no exception may cross.
class TraceFile final {
  public:
    enum class Form { timeline, brief, json };

    /// Takes over `descriptor`; `name` is for messages. `atOnce`: no event waits for the next one.
    TraceFile(Form form, int descriptor, std::string name, bool atOnce);
    TraceFile(const TraceFile&) = delete;
    TraceFile& operator=(const TraceFile&) = delete;
    ~TraceFile();

    /// From now on a line that is being typed stays whole. `terminal` must outlive this.
    void share(Terminal& terminal) { terminal_ = &terminal; }
    /// Any thread, as `flush`.
    void write(const Event& event);
    /// Lines for who follows the session: among the events if those are for a person, else on standard error.
    void tell(const std::string& lines);
    /// Sends on what was collected.
    void flush();
    /// Throws std::runtime_error when a write has failed.
    void check() const;

  private:
    void add(const std::string& lines);
    void send();

    Form form_;
    int descriptor_;
    std::string name_;
    bool atOnce_;
    std::mutex mutex_;  ///< a module that hangs does not keep the last events to itself
    BriefTimeline brief_;
    Terminal* terminal_ = nullptr;
    std::string pending_;
    int error_ = 0;
};

}  // namespace sim
