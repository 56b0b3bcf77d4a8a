#pragma once

#include "platform/ThreadEnd.h"

#include <cstdint>

namespace entry {

constexpr std::int8_t kSuccess = 0;
constexpr std::int8_t kFailure = -1;

/// Runs the body of an export; whatever is thrown in it becomes `failure`, since nothing may be thrown into
/// the host. A host thread that is being unwound goes on to its end.
template <typename Result, typename Body>
Result guarded(Result failure, Body&& body) {
    try {
        return body();
    } catch (const platform::ForcedUnwind&) {
        throw;
    } catch (...) {
        return failure;
    }
}

/// Runs what an export has to log at its end, and answers `result` whatever becomes of that.
template <typename Result, typename Body>
Result answerAfter(Result result, Body&& body) {
    return guarded(result, [&] {
        body();
        return result;
    });
}

}  // namespace entry
