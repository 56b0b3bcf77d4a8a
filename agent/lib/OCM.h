// An asset's messaging channel to the enterprise.
#pragma once

#include "lib/Enterprise.h"

namespace KRX::Messaging {

class OCM final {
  public:
    /// `enterprise` is not owned; null stands for one that accepts everything.
    explicit OCM(agent::Enterprise* enterprise) : enterprise_(enterprise) {}
    OCM(const OCM&) = delete;
    OCM& operator=(const OCM&) = delete;

    /// Delivers a record, on the calling thread or a link thread that it waits for: the enterprise's answer.
    std::int8_t deliver(const std::string& member, const agent::NamedValues& properties);

  private:
    agent::Enterprise* enterprise_;
};

}  // namespace KRX::Messaging
