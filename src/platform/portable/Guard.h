#pragma once

#include "platform/ThreadEnd.h"

#include <cstdint>

namespace platform {

// What the exports and the service's operations answer.
constexpr std::int8_t kSuccess = 0;
constexpr std::int8_t kFailure = -1;

/// Runs the body and answers its result; an exception, of the agent too, becomes `failure`. A thread that is
/// being unwound goes on to its end.
template <typename Result, typename Body>
Result guarded(Result failure, Body&& body) {
    try {
        return body();
    } catch (const ForcedUnwind&) {
        throw;
    } catch (...) {
        return failure;
    }
}

/// Runs the body; its exceptions are dropped, as above.
template <typename Body>
void attempt(Body&& body) {
    guarded(kSuccess, [&] {
        body();
        return kSuccess;
    });
}

/// Runs the body, and answers `result` in any case.
template <typename Result, typename Body>
Result answerAfter(Result result, Body&& body) {
    attempt(body);
    return result;
}

}  // namespace platform
