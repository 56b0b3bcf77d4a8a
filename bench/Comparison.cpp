#include "Comparison.h"

#include <algorithm>
#include <ctime>
#include <thread>
#include <utility>
#include <vector>

namespace bench {
namespace {

Quartiles quartilesOf(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    const auto at = [&](std::size_t quarter) { return values[(values.size() - 1) * quarter / 4]; };
    return {at(1), at(2), at(3)};
}

/// In nanoseconds.
double now(Time time) {
    timespec moment{};
    ::clock_gettime(time == Time::OfTheClock ? CLOCK_MONOTONIC : CLOCK_PROCESS_CPUTIME_ID, &moment);
    return static_cast<double>(moment.tv_sec) * 1e9 + static_cast<double>(moment.tv_nsec);
}

}  // namespace

Comparison compare(const Round& subject, const Round& reference, int rounds) {
    std::vector<double> subjects;
    std::vector<double> references;
    std::vector<double> ratios;
    std::vector<double> differences;
    subject();  // warms up both
    reference();
    for (int round = 0; round < rounds; ++round) {
        const bool subjectFirst = round % 2 == 0;
        const double first = subjectFirst ? subject() : reference();
        const double second = subjectFirst ? reference() : subject();
        subjects.push_back(subjectFirst ? first : second);
        references.push_back(subjectFirst ? second : first);
        ratios.push_back(subjects.back() / references.back());
        differences.push_back(subjects.back() - references.back());
    }
    return {quartilesOf(subjects).median, quartilesOf(references).median, quartilesOf(ratios),
            quartilesOf(differences)};
}

Round roundOf(std::function<void()> work, int operations, int threads, Time time) {
    return [work = std::move(work), operations, threads, time] {
        const auto loop = [&] {
            for (int i = 0; i < operations; ++i) {
                work();
            }
        };
        const double start = now(time);
        {
            std::vector<std::jthread> others;
            for (int i = 1; i < threads; ++i) {
                others.emplace_back(loop);
            }
            loop();
        }
        return (now(time) - start) / (operations * threads);
    };
}

}  // namespace bench
