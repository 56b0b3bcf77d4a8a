// The default runtime: every thread runs as the system lets it.
#pragma once

#include "Runtime.h"

namespace agent {

class FreeRuntime final : public Runtime {
  public:
    std::unique_ptr<Thread> construct() override;
    void sleepHost(std::chrono::milliseconds time) override;
};

}  // namespace agent
