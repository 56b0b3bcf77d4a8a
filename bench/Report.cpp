#include "Report.h"

#include <cmath>
#include <cstdio>
#include <sstream>

#include <fcntl.h>
#include <unistd.h>

namespace bench {
namespace {

constexpr int kBarMissed = 1;
constexpr int kNothingNamed = 3;

bool keeps(const Comparison& comparison, Bar bar) {
    return !bar || comparison.ratio.median <= *bar;
}

std::string timeText(double nanoseconds) {
    const double size = std::fabs(nanoseconds);
    char text[32];
    if (size < 1e4) {
        std::snprintf(text, sizeof text, "%.0f ns", nanoseconds);
    } else if (size < 1e6) {
        std::snprintf(text, sizeof text, "%.1f us", nanoseconds / 1e3);
    } else {
        std::snprintf(text, sizeof text, "%.2f ms", nanoseconds / 1e6);
    }
    return text;
}

class TableReporter final : public benchmark::BenchmarkReporter {
  public:
    TableReporter(int descriptor, std::string settings)
        : descriptor_(descriptor), settings_(std::move(settings)) {}

    bool ReportContext(const Context& context) override {
        std::ostringstream machine;
        PrintBasicContext(&machine, context);
        ::dprintf(descriptor_, "%s%s\n%-42s %10s %10s %7s  %-15s %10s  %s\n", machine.str().c_str(),
                  settings_.c_str(), "A / B", "A", "B", "A/B", "its quartiles", "A-B", "bar");
        return true;
    }

    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            const auto value = [&](const char* name) {
                const auto found = run.counters.find(name);
                return found == run.counters.end() ? 0.0 : found->second.value;
            };
            ::dprintf(descriptor_, "%-42s %10s %10s %7.3f  [%.3f  %.3f] %10s  ",
                      run.run_name.function_name.c_str(), timeText(value("subject")).c_str(),
                      timeText(value("reference")).c_str(), value("ratio"), value("low"), value("high"),
                      timeText(value("difference")).c_str());
            if (const double bar = value("bar"); bar > 0) {
                ::dprintf(descriptor_, "%.2f", bar);
            }
            const bool missed = value("missed") > 0;
            ::dprintf(descriptor_, "%s\n", missed ? ", missed" : "");
            kept_ = kept_ && !missed;
        }
    }

    bool kept() const { return kept_; }

  private:
    int descriptor_;
    std::string settings_;
    bool kept_ = true;
};

}  // namespace

void report(benchmark::State& state, const std::function<Comparison()>& measure, Bar bar) {
    Comparison comparison = measure();
    for (int attempt = 1; attempt < kAttempts && !keeps(comparison, bar); ++attempt) {
        comparison = measure();
    }
    state.SetIterationTime(comparison.subject * 1e-9);
    state.counters["subject"] = comparison.subject;
    state.counters["reference"] = comparison.reference;
    state.counters["ratio"] = comparison.ratio.median;
    state.counters["low"] = comparison.ratio.low;
    state.counters["high"] = comparison.ratio.high;
    state.counters["difference"] = comparison.difference.median;
    state.counters["bar"] = bar.value_or(0);
    state.counters["missed"] = keeps(comparison, bar) ? 0 : 1;
}

int run(int argumentCount, char** arguments, std::string (*settings)()) {
    benchmark::Initialize(&argumentCount, arguments);
    if (benchmark::ReportUnrecognizedArguments(argumentCount, arguments)) {
        return 2;
    }
    const int table = ::dup(STDOUT_FILENO);
    const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    ::dup2(nowhere, STDOUT_FILENO);
    TableReporter reporter(table, settings());
    std::ostringstream unnamed;  // that a filter names none here is told by who started both programs
    reporter.SetErrorStream(&unnamed);
    if (benchmark::RunSpecifiedBenchmarks(&reporter) == 0) {
        return kNothingNamed;
    }
    return reporter.kept() ? 0 : kBarMissed;
}

}  // namespace bench
