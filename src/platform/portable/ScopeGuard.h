#pragma once

#include <utility>

namespace platform {

/// Does something at the end of its scope, however that is left, also when the thread is unwound. The
/// action throws nothing.
template <typename Action>
class ScopeGuard final {
  public:
    explicit ScopeGuard(Action action) noexcept : action_(std::move(action)) {}
    ScopeGuard(const ScopeGuard&) = delete;
    ScopeGuard& operator=(const ScopeGuard&) = delete;
    ~ScopeGuard() { action_(); }

  private:
    Action action_;
};

}  // namespace platform
