// The agent's registration library, as the module uses it.
#pragma once

#include "platform/agent/Api.h"
#include "platform/agent/Messaging.h"

#include <cstdint>

namespace KRX::Services::RegistrationNS {

/// A registration record: member, poll interval and properties of an asset.
class KRX_API Asset : public Messaging::Serializable {
  public:
    explicit Asset(const char* elementName);
    /// Releases the record, and every property that its list still holds.
    ~Asset() override;

    /// Copies the whole record.
    void CopyFrom(const Asset& other);
    /// Releases all properties and empties the list.
    void ClearProperties();
    /// The property list, or null. The list is the record's; entries are `Property` objects.
    Messaging::SerializableArray* GetProperties();
    const Messaging::SerializableArray* GetProperties() const;
    /// Texts owned by the record.
    const char* GetMemberName() const;
    const char* GetMemberPassword() const;
    /// The asset's current poll interval in seconds.
    unsigned int GetCurrentPollInterval() const;

  protected:
    struct Implementation;
    Implementation* record_;
};

/// One property of a registration record. Keeps its own copies of the texts.
class KRX_API Property : public Messaging::Serializable {
  public:
    Property(const char* action, const char* name, const char* value, const char* elementName);
    ~Property() override;
    /// Replaces the value with a copy.
    void SetValue(const char* value);

  protected:
    char* action_ = nullptr;
    char* name_ = nullptr;
    char* value_ = nullptr;
};

/// Client of the enterprise's Registration service.
class KRX_API RegistrationProxy {
  public:
    RegistrationProxy(const char* serviceName, const char* requestUri, const char* serviceNamespace);
    RegistrationProxy(const RegistrationProxy&) = delete;
    RegistrationProxy& operator=(const RegistrationProxy&) = delete;
    virtual ~RegistrationProxy();

    /// Sends the record to the enterprise; blocks until it is answered. 0 on success. Any thread.
    virtual std::int8_t UpdateAsset(Asset& asset, int flags);

    /// The channel that the proxy sends through; not owned.
    void SetOCM(Messaging::OCM* channel);
    /// Copies token and credentials of the context. 0, or -1 at the first failure.
    std::int8_t SetSecurityContext(Messaging::Headers::SecurityContext& context);

  private:
    struct Implementation;
    Implementation* implementation_;
};

}  // namespace KRX::Services::RegistrationNS
