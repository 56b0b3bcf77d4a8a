// Where the events go.
#pragma once

#include "Event.h"

#include <mutex>
#include <string>

namespace sim {

/// Writes events to a descriptor. A failed write is kept and reported by `check`, since events come up
/// between frames that no exception may cross.
class TraceFile final {
  public:
    enum class Form { timeline, json };

    /// Takes over `descriptor`; `name` is for messages. `atOnce`: no event waits for the next one.
    TraceFile(Form form, int descriptor, std::string name, bool atOnce);
    TraceFile(const TraceFile&) = delete;
    TraceFile& operator=(const TraceFile&) = delete;
    ~TraceFile();

    /// Any thread, as `flush`.
    void write(const Event& event);
    /// Sends on what was collected.
    void flush();
    /// Throws std::runtime_error when a write has failed.
    void check() const;

  private:
    void send();

    Form form_;
    int descriptor_;
    std::string name_;
    bool atOnce_;
    std::mutex mutex_;  ///< a module that hangs does not keep the last events to itself
    std::string pending_;
    int error_ = 0;
};

}  // namespace sim
