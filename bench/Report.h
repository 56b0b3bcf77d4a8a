// The table that the benchmarks print.
#pragma once

#include "Comparison.h"

#include <functional>
#include <optional>
#include <string>

#include <benchmark/benchmark.h>

namespace bench {

/// The largest ratio that a comparison may have; none is to compare only.
using Bar = std::optional<double>;

/// How often what misses its bar is measured: what the module costs is there each time, a disturbed machine
/// is not.
constexpr int kAttempts = 5;

/// Hands what `measure` answers to the reporter, as the result of a benchmark that runs once. While it misses
/// its bar it is measured again, `kAttempts` times in all.
void report(benchmark::State& state, const std::function<Comparison()>& measure, Bar bar = std::nullopt);

/// Sends standard output to /dev/null, where the module's echo is to go, and prints the table to where it
/// went before: the settings first, then what Google Benchmark was told to run. The process's exit status: 1
/// when a bar was missed, 3 when a filter names none of the benchmarks.
int run(int argumentCount, char** arguments, std::string (*settings)());

}  // namespace bench
