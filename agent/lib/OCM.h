// An asset's messaging channel to the enterprise.
#pragma once

#include "Enterprise.h"

namespace KRX::Messaging {

class OCM final {
  public:
    /// `enterprise` is not owned; null stands for one that accepts everything.
    explicit OCM(agent::Enterprise* enterprise) : enterprise_(enterprise) {}
    OCM(const OCM&) = delete;
    OCM& operator=(const OCM&) = delete;

    /// Delivers a record: the enterprise's answer.
    std::int8_t deliver(const std::string& member, const agent::NamedValues& properties) {
        return enterprise_ == nullptr ? std::int8_t{0} : enterprise_->receive(member, properties);
    }

  private:
    agent::Enterprise* enterprise_;
};

}  // namespace KRX::Messaging
