#pragma once

namespace entry {

/// Runs the body of an export; whatever is thrown in it becomes `failure`, since nothing may be thrown into
/// the host.
template <typename Result, typename Body>
Result guarded(Result failure, Body&& body) noexcept {
    try {
        return body();
    } catch (...) {
        return failure;
    }
}

constexpr signed char kSuccess = 0;
constexpr signed char kFailure = -1;

}  // namespace entry
