// What the agent's side reads and writes of objects that the module only makes and hands over.
#pragma once

#include "platform/agent/Registration.h"

namespace agent {

/// A device's own registration record.
class KRX_API DeviceRecord final : public KRX::Services::RegistrationNS::Asset {
  public:
    DeviceRecord() : Asset("Asset") {}
    void setMember(const char* name, const char* password);
    void setPollInterval(unsigned int seconds);
};

/// What a property holds; the texts are the property's.
struct PropertyTexts {
    const char* action;
    const char* name;
    const char* value;
};
KRX_API PropertyTexts textsOf(const KRX::Services::RegistrationNS::Property& property);

/// The entry at `index`, or null outside the list.
KRX_API void* entryOf(const KRX::Utils::VoidArray& list, int index);

/// The texts of credentials, owned by them.
KRX_API const char* memberOf(const KRX::Messaging::Headers::Credentials& credentials);
KRX_API const char* passwordOf(const KRX::Messaging::Headers::Credentials& credentials);
/// The credentials that a context holds, or null.
KRX_API const KRX::Messaging::Headers::Credentials* credentialsOf(
    const KRX::Messaging::Headers::SecurityContext& context);
/// Copies token and credentials, fresh ones when there are none. 0, or -1 at the first failure.
KRX_API std::int8_t copySecurity(const KRX::Messaging::Headers::SecurityContext& from,
                                 KRX::Messaging::Headers::SecurityContext& to);

}  // namespace agent
