#pragma once

#include "platform/ThreadEnd.h"

#include <cstdint>

namespace entry {

constexpr std::int8_t kSuccess = 0;
constexpr std::int8_t kFailure = -1;

using platform::guarded;

/// Runs what an export has to log at its end, and answers `result` whatever becomes of that.
template <typename Result, typename Body>
Result answerAfter(Result result, Body&& body) {
    return guarded(result, [&] {
        body();
        return result;
    });
}

}  // namespace entry
