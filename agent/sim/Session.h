// A simulation from the command line's options to its end.
#pragma once

#include "session/PageFile.h"
#include "session/SessionRecord.h"
#include "sim/Simulation.h"
#include "sim/console/Console.h"
#include "sim/console/LiveSession.h"
#include "sim/host/SimulatedAgent.h"
#include "sim/input/Input.h"
#include "sim/input/OrderQueue.h"
#include "sim/input/Terminal.h"
#include "sim/scenario/Scenario.h"
#include "sim/status/SessionStatus.h"
#include "sim/time/ProcessTime.h"
#include "sim/time/Scheduler.h"
#include "sim/trace/Recorder.h"
#include "sim/trace/StdoutCapture.h"
#include "sim/trace/TraceFile.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace sim {

struct Options;

/// Makes the parts of a simulation, in the order of their needs, and runs it. On the host thread.
class Session final {
  public:
    /// Throws std::runtime_error with the reason when something that the options name cannot be used.
    explicit Session(const Options& options);
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    /// As `Simulation::run`. When the module hangs, the process ends with status 1.
    bool run();
    /// Whether the start of a family failed.
    bool startFailed() const { return agent_.startFailed(); }

  private:
    /// The module's time comes from the clock as long as this lives.
    class ShownTime final {
      public:
        explicit ShownTime(const Clock& clock) { showTimeOf(&clock); }
        ShownTime(const ShownTime&) = delete;
        ShownTime& operator=(const ShownTime&) = delete;
        ~ShownTime() { showTimeOf(nullptr); }
    };

    std::unique_ptr<Clock> makeClock();
    void serve(const std::string& place);
    std::int64_t now() const;
    void writePage();
    [[noreturn]] void tellHang(const std::string& whoWaitsWhere);

    const bool real_;
    const Scenario scenario_;
    std::optional<session::PageFile> page_;
    const std::unique_ptr<Terminal> terminal_;
    TraceFile trace_;
    StdoutCapture capture_;
    const std::unique_ptr<Input> input_;
    std::function<Instant()> present_;  ///< the real clock's, on any thread
    const std::unique_ptr<Clock> clock_;
    Recorder recorder_;
    session::SessionRecord record_;
    LiveSession live_;
    OrderQueue orders_;
    SessionStatus status_;
    Scheduler scheduler_;
    const ShownTime shownTime_;
    SimulatedAgent agent_;
    Simulation simulation_;
    std::unique_ptr<Console> console_;
};

}  // namespace sim
