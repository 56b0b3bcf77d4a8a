// Turns what happens into events.
#pragma once

#include "lib/Observer.h"
#include "sim/trace/Event.h"

#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace sim {

class Clock;
class StdoutCapture;
class TraceFile;

/// Sees the agent's libraries and is told of the actions. Used by one thread at a time.
class Recorder final : public agent::Observer {
  public:
    using Fields = std::vector<std::pair<std::string_view, Value>>;

    Recorder(const Clock& clock, StdoutCapture& capture, TraceFile& trace)
        : clock_(clock), capture_(capture), trace_(trace) {}

    /// Is told of an event right after it happened, by the thread that has the turn. Must not throw: it stands
    /// between module frames.
    using Listener = std::function<void(const Event& event)>;
    void tell(Listener listener) { listeners_.push_back(std::move(listener)); }

    /// The module was called and came back.
    void recordCall(Fields fields, const std::string& remark);
    /// The contents of a file, or that there is none.
    void recordFile(const std::string& path, const std::optional<std::string>& text);

    /// What the listeners are to know though a trace does not hold it: "clock-step", "unload", and "audit" before
    /// the module is told.
    void tellOnly(std::string_view name, Fields fields = {}) {
        tellListeners(eventOf("host", name, std::move(fields), {}));
    }

    void onLog(int level, std::string_view text) override;
    void onCredentials(const char* memberId) override;
    void onForcePoll() override;
    void onUpdateAsset(std::int8_t result, const agent::NamedValues& properties) override;
    void onThreadStart(const std::string& name, std::int8_t result) override;
    void onThreadEnd(int result) override;
    void onThreadDestroyed(const std::string& name) override;
    void onSleep(unsigned int milliseconds) override;

  private:
    void record(std::string_view name, Fields fields);
    void recordOf(const std::string& thread, std::string_view name, Fields fields,
                  const std::string& remark = {});
    Event eventOf(const std::string& thread, std::string_view name, Fields fields,
                  const std::string& remark) const;
    void tellListeners(const Event& event);
    void recordStdout();

    const Clock& clock_;
    StdoutCapture& capture_;
    TraceFile& trace_;
    std::vector<Listener> listeners_;
};

}  // namespace sim
