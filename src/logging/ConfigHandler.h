#pragma once

#include "logging/LogManager.h"

#include <atomic>

/// What the controller holds of the logger: the routing, and whether the logger extension was started (its
/// stop then ends the shared objects, not the RSM extension's).
class ConfigHandler final {
  public:
    LogManager& getLogManager() noexcept { return logManager_; }
    bool isLoggerStarted() const noexcept { return loggerStarted_; }
    void setLoggerStarted(bool started) noexcept { loggerStarted_ = started; }

  private:
    LogManager logManager_;
    std::atomic<bool> loggerStarted_{false};
};
