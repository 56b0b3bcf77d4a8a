// krx-agent-sim: loads the module as an agent does and drives it with a scenario.
#include "Input.h"
#include "Options.h"
#include "OrderQueue.h"
#include "ProcessTime.h"
#include "RealClock.h"
#include "Recorder.h"
#include "Scenario.h"
#include "Scheduler.h"
#include "SimulatedAgent.h"
#include "Simulation.h"
#include "StdoutCapture.h"
#include "Terminal.h"
#include "TraceFile.h"
#include "console/Console.h"
#include "console/LiveSession.h"
#include "report/PageFile.h"
#include "report/SessionPage.h"
#include "report/SessionRecord.h"
#include "report/TraceReader.h"
#include "status/FileStatus.h"
#include "status/SessionStatus.h"
#include "status/StateFiles.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <memory>
#include <optional>
#include <stdexcept>

#include <fcntl.h>
#include <unistd.h>

namespace {

using sim::Options;

enum ExitStatus : int { ranToEnd = 0, unusable = 1, wrongUsage = 2, startFailed = 3 };

constexpr std::chrono::seconds kVirtualStart(1767225600);  // 2026-01-01T00:00:00Z

/// The module's time comes from the clock as long as this lives.
class ShownTime final {
  public:
    explicit ShownTime(const sim::Clock& clock) { sim::showTimeOf(&clock); }
    ShownTime(const ShownTime&) = delete;
    ShownTime& operator=(const ShownTime&) = delete;
    ~ShownTime() { sim::showTimeOf(nullptr); }
};

/// Where the events go, opened before standard output is redirected: the path may lead there, too.
int openEvents(const std::optional<std::string>& path) {
    const int descriptor = path && *path != "-"
                               ? ::open(path->c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666)
                               : ::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    if (descriptor < 0) {
        throw std::runtime_error(path.value_or("standard output") + ": " + std::strerror(errno));
    }
    return descriptor;
}

std::chrono::microseconds realTime() {
    return std::chrono::duration_cast<std::chrono::microseconds>(
        std::chrono::system_clock::now().time_since_epoch());
}

/// Where the session's page goes, if one is wanted; opened before anything runs, so that a wrong path is
/// told.
std::optional<sim::PageFile> openPage(const Options& options) {
    return options.report ? std::optional<sim::PageFile>(std::in_place, *options.report) : std::nullopt;
}

ExitStatus report(const Options& options) {
    std::ifstream trace(options.keptTrace, std::ios::binary);
    if (!trace) {
        throw std::runtime_error(options.keptTrace + ": " + std::strerror(errno));
    }
    sim::SessionRecord session(std::filesystem::path(options.keptTrace).filename().string());
    if (options.configuration) {
        session.useConfiguration(*options.configuration);
    }
    if (options.clock) {
        session.setClock(*options.clock);
    }
    if (!sim::readTrace(trace, options.keptTrace, session)) {
        std::cerr << options.keptTrace << ": the last line is cut off and left out" << std::endl;
    }
    openPage(options)->write(sim::sessionPage(session, false));
    return ranToEnd;
}

ExitStatus fileStatus(const Options& options) {
    const std::int64_t now = std::chrono::floor<std::chrono::seconds>(
                                 options.clock ? std::chrono::microseconds(*options.clock) : realTime())
                                 .count();
    const std::string resume = options.configuration ? sim::resumePathOf(*options.configuration) : "";
    const sim::StateFiles files = sim::readStateFiles(resume, options.schedule.value_or(""), now);
    std::cout << (options.json ? sim::fileStatusJson(files, now) : sim::fileStatusText(files, now));
    return ranToEnd;
}

ExitStatus simulate(const Options& options) {
    const bool real = options.mode == Options::Mode::run;
    const sim::Scenario scenario =
        options.scenario ? sim::readScenarioFile(*options.scenario) : sim::Scenario();
    std::optional<sim::PageFile> page = openPage(options);
    const std::unique_ptr<sim::Terminal> terminal = real ? sim::Terminal::open() : nullptr;
    sim::TraceFile trace(options.trace   ? sim::TraceFile::Form::json
                         : options.brief ? sim::TraceFile::Form::brief
                                         : sim::TraceFile::Form::timeline,
                         openEvents(options.trace), options.trace.value_or("standard output"), real);
    if (terminal != nullptr) {
        trace.share(*terminal);
    }
    sim::StdoutCapture capture;
    const auto input = real ? std::make_unique<sim::Input>(STDIN_FILENO, terminal.get()) : nullptr;
    std::unique_ptr<sim::Clock> clock;
    std::function<sim::Instant()> present;
    if (real) {
        auto realClock =
            std::make_unique<sim::RealClock>(scenario.clock ? *scenario.clock : realTime(), *input);
        present = [&shown = *realClock] { return shown.elapsed(); };
        clock = std::move(realClock);
    } else {
        clock = std::make_unique<sim::Clock>(scenario.clock.value_or(kVirtualStart));
    }
    sim::Recorder recorder(*clock, capture, trace);
    sim::SessionRecord session(options.scenario ? std::filesystem::path(*options.scenario).stem().string()
                                                : "session");
    if (options.scenario) {
        session.setNote(sim::leadingComment(*options.scenario));
    }
    if (options.configuration) {
        session.useConfiguration(*options.configuration);
    }
    sim::LiveSession live(session, present);
    sim::OrderQueue orders;
    sim::SessionStatus status;
    recorder.tell(status);
    if (options.http) {
        recorder.tell(live);
        recorder.tell(orders);
        input->alsoWatch(orders.descriptor());
    } else if (page) {
        recorder.tell(session);
    }
    const auto tellHang = [&trace, &terminal](const std::string& whoWaitsWhere) {
        if (terminal != nullptr) {
            terminal->close();
        }
        std::fprintf(stderr, "the module hangs: %s\n", whoWaitsWhere.c_str());
        trace.flush();
        std::_Exit(unusable);  // What waits for ever cannot be ended in order.
    };
    sim::Scheduler scheduler(*clock, tellHang, options.patience);
    const ShownTime shownTime(*clock);
    sim::SimulatedAgent agent(options.module, *clock, scheduler, recorder);
    const auto now = [&shown = *clock] {
        return std::chrono::floor<std::chrono::seconds>(shown.wall()).count();
    };
    agent.onStatus([&trace, &status, now] { trace.tell(status.text(now())); });
    sim::Simulation simulation(scenario, *clock, scheduler, agent, trace, input.get());
    std::optional<sim::Console> console;
    if (options.http) {
        simulation.takeOrdersFrom(orders);
        console.emplace(sim::parsePlace(*options.http), live, orders,
                        [&status, now] { return status.json(now()); });
        const sim::Terminal::Hidden hidden(terminal.get());
        std::cerr << "krx-agent-sim: the session is at " << console->url() << std::endl;
    }
    const auto writePage = [&page, &session] {
        if (page) {
            page->write(sim::sessionPage(session, false));
        }
    };
    try {
        const bool usable = simulation.run();
        console.reset();
        writePage();
        return !usable ? unusable : options.strict && agent.startFailed() ? startFailed : ranToEnd;
    } catch (const std::exception&) {
        writePage();  // Most of all a session that went wrong is to be looked at.
        throw;
    }
}

}  // namespace

int main(int count, char** words) {
    try {
        const Options options = sim::parseOptions(count, words);
        switch (options.mode) {
            case Options::Mode::help:
                std::cout << sim::kHelp;
                return ranToEnd;
            case Options::Mode::version:
                std::cout << "krx-agent-sim " SIM_VERSION "\n";
                return ranToEnd;
            case Options::Mode::replay:
            case Options::Mode::run:
                return simulate(options);
            case Options::Mode::report:
                return report(options);
            case Options::Mode::status:
                return fileStatus(options);
        }
    } catch (const sim::UsageError& error) {
        std::cerr << "krx-agent-sim: " << error.what() << "\n" << sim::kHelp;
        return wrongUsage;
    } catch (const std::exception& error) {
        std::cerr << error.what() << std::endl;
    }
    return unusable;
}
