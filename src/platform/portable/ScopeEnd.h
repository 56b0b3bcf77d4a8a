#pragma once

#include <utility>

namespace platform {

/// Does something at the end of its scope, however that is left: also when the thread is unwound. The
/// action throws nothing.
template <typename Action>
class ScopeEnd final {
  public:
    explicit ScopeEnd(Action action) noexcept : action_(std::move(action)) {}
    ScopeEnd(const ScopeEnd&) = delete;
    ScopeEnd& operator=(const ScopeEnd&) = delete;
    ~ScopeEnd() { action_(); }

  private:
    Action action_;
};

}  // namespace platform
