#include "sim/Session.h"

#include "session/SessionPage.h"
#include "sim/Options.h"
#include "sim/System.h"
#include "sim/time/RealClock.h"
#include "sim/trace/RecordedEvent.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <stdexcept>
#include <system_error>

namespace sim {

namespace {

constexpr int kStandardInput = 0;
constexpr std::chrono::seconds kVirtualStart(1767225600);  // 2026-01-01T00:00:00Z

/// Where the events go, opened before standard output is redirected: the path may lead there, too.
int openEvents(const std::optional<std::string>& path) {
    try {
        return system::openOutput(path == "-" ? std::nullopt : path);
    } catch (const std::system_error& error) {
        throw std::runtime_error(path.value_or("standard output") + ": " + error.code().message());
    }
}

TraceFile::Form formOf(const Options& options) {
    return options.trace   ? TraceFile::Form::json
           : options.brief ? TraceFile::Form::brief
                           : TraceFile::Form::timeline;
}

}  // namespace

// The page's file is opened before anything runs, so that a wrong path is told.
Session::Session(const Options& options)
    : real_(options.real),
      scenario_(options.scenario ? readScenarioFile(*options.scenario) : Scenario()),
      page_(options.report ? std::optional<session::PageFile>(std::in_place, *options.report) : std::nullopt),
      terminal_(real_ ? Terminal::open() : nullptr),
      trace_(formOf(options), openEvents(options.trace), options.trace.value_or("standard output"), real_),
      input_(real_ ? std::make_unique<Input>(kStandardInput, terminal_.get()) : nullptr),
      clock_(makeClock()),
      recorder_(*clock_, capture_, trace_),
      record_(options.scenario ? std::filesystem::path(*options.scenario).stem().string() : "session"),
      live_(record_, present_),
      scheduler_(
          *clock_, [this](const std::string& who) { tellHang(who); }, options.patience),
      shownTime_(*clock_),
      agent_(options.module, *clock_, scheduler_, recorder_),
      simulation_(scenario_, *clock_, scheduler_, agent_, trace_, input_.get()) {
    if (terminal_ != nullptr) {
        trace_.share(*terminal_);
    }
    if (options.scenario) {
        record_.setNote(leadingComment(*options.scenario));
    }
    if (options.configuration) {
        record_.useConfiguration(*options.configuration);
    }
    recorder_.tell([this](const Event& event) { status_.onEvent(event); });
    agent_.onStatus([this] { trace_.tell(status_.text(now())); });
    if (options.http) {
        serve(*options.http);
    } else if (page_) {
        recorder_.tell([this](const Event& event) { addTo(record_, event); });
    }
}

bool Session::run() {
    try {
        const bool usable = simulation_.run();
        console_.reset();
        writePage();
        return usable;
    } catch (const std::exception&) {
        writePage();  // Most of all a session that went wrong is to be looked at.
        throw;
    }
}

std::unique_ptr<Clock> Session::makeClock() {
    if (!real_) {
        return std::make_unique<Clock>(scenario_.clock.value_or(kVirtualStart));
    }
    auto clock =
        std::make_unique<RealClock>(scenario_.clock ? *scenario_.clock : system::realTime(), *input_);
    present_ = [&shown = *clock] { return shown.elapsed(); };
    return clock;
}

void Session::serve(const std::string& place) {
    recorder_.tell([this](const Event& event) {
        live_.onEvent(event);
        orders_.onEvent(event);
    });
    input_->alsoHear(orders_.bell());
    simulation_.takeOrdersFrom(orders_);
    console_ = openConsole(place, live_, orders_, [this](bool metrics) {
        return metrics ? status_.metrics(now()) : status_.json(now());
    });
    const Terminal::Hidden hidden(terminal_.get());
    std::cerr << "krx-agent-sim: the session is at " << console_->url() << std::endl;
}

std::int64_t Session::now() const {
    // The clock stands still while nothing happens.
    const Instant since = present_ ? present_() - clock_->now() : Instant(0);
    return std::chrono::floor<std::chrono::seconds>(clock_->wall() + since).count();
}

void Session::writePage() {
    if (page_) {
        page_->write([this](std::ostream& target) { target << session::sessionPage(record_, false); });
    }
}

void Session::tellHang(const std::string& whoWaitsWhere) {
    if (terminal_ != nullptr) {
        terminal_->close();
    }
    std::fprintf(stderr, "the module hangs: %s\n", whoWaitsWhere.c_str());
    trace_.flush();
    try {
        writePage();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
    }
    std::_Exit(EXIT_FAILURE);  // What waits for ever cannot be ended in order.
}

}  // namespace sim
