// The agent's messaging library, as the module uses it.
#pragma once

#include "platform/agent/Api.h"
#include "platform/agent/Utilities.h"

#include <cstdint>

namespace KRX::Messaging {

class OCM;
class Serializer;
class SubElementDef;

/// Base of every element that the library reads from or writes to a message. The order of the virtual
/// operations is part of the binary interface. Texts answered by the `Get...Text` operations belong to the
/// element while the release flag is cleared; when it is set they are character arrays that the library
/// releases after use.
class KRX_API Serializable {
  public:
    /// An element named `elementName` (copied), with an optional text (copied).
    Serializable(const char* elementName, const char* text, int required, int flag);
    Serializable(const Serializable&) = delete;
    Serializable& operator=(const Serializable&) = delete;

    virtual ~Serializable();
    virtual std::int8_t Serialize(Serializer& serializer, unsigned int flags);
    virtual std::int8_t Deserialize(Serializer& serializer);
    virtual std::int8_t GetSubElement(const char* name, SubElementDef*& subElement);
    virtual std::int8_t SetAttributeText(const char* name, const char* text);
    virtual std::int8_t SetElementText(const char* text);
    virtual std::int8_t SetSubElementText(const char* name, const char* text);
    virtual const char* GetAttributeText(const char* name, bool& release);
    virtual const char* GetElementText(bool& release);
    virtual const char* GetSubElementText(const char* name, bool& release, unsigned int index);
    virtual std::int8_t PreDeserialize();
    virtual bool HasElementText();

    /// Declares an attribute, read through `GetAttributeText`.
    std::int8_t RegisterAttribute(const char* name, int flag, const char* text);
    /// Declares a simple text sub-element. Sub-elements keep the order in which they are declared.
    std::int8_t RegisterSubElement(const char* name, int minimum, int maximum, const char* text);
    /// Declares a sub-element whose content is `element`, which stays owned by the caller and may be null.
    std::int8_t RegisterSubElement(const char* name, Serializable* element, int flag, const char* text);

    void SetElementName(const char* name);
    const char* GetElementName() const;

  private:
    struct Implementation;
    Implementation* implementation_;
};

/// An element that holds one text.
class KRX_API SerializableString : public Serializable {
  public:
    SerializableString(const char* elementName, const char* value);
    ~SerializableString() override;
    std::int8_t SetElementText(const char* text) override;
    const char* GetElementText(bool& release) override;
    bool HasElementText() override;

    /// Replaces the held text with a copy of `value`, which may be null.
    void SetValue(const char* value);
    /// The held text or null; valid until the next `SetValue`.
    const char* GetValue() const;

  private:
    char* value_ = nullptr;
};

/// A list of elements; the list does not own them while the module works on it.
class KRX_API SerializableArray : public Utils::VoidArray {
  public:
    SerializableArray();
    ~SerializableArray() override;
};

}  // namespace KRX::Messaging

namespace KRX::Messaging::Headers {

/// Header of a web service request: which service, which operation. Texts are copied.
class KRX_API RequestHeader : public Serializable {
  public:
    RequestHeader();
    ~RequestHeader() override;
    void SetServiceName(const char* name);
    void SetOperation(const char* operation);
    const char* GetOperation() const;

  private:
    char* serviceName_ = nullptr;
    char* operation_ = nullptr;
};

/// Member id and password. Texts are copied.
class KRX_API Credentials : public Serializable {
  public:
    explicit Credentials(const char* elementName);
    ~Credentials() override;
    void SetMemberId(const char* memberId);
    void SetPassword(const char* password);

  protected:
    char* memberId_ = nullptr;
    char* password_ = nullptr;
};

/// The security header of a request.
class KRX_API SecurityContext : public Serializable {
  public:
    explicit SecurityContext(const char* elementName);
    ~SecurityContext() override;
    /// Copies the credentials; the source may be destroyed right after. 0 on success.
    std::int8_t SetCredentials(const Credentials* credentials);

  protected:
    Credentials* credentials_ = nullptr;
    char* authenticationToken_ = nullptr;
};

}  // namespace KRX::Messaging::Headers

namespace KRX::Messaging {

/// One web service call: header, request and response. Owned by the host, which also deletes the request and
/// the response that the service put into it.
class KRX_API WebServiceMessage {
  public:
    WebServiceMessage();
    WebServiceMessage(const WebServiceMessage&) = delete;
    WebServiceMessage& operator=(const WebServiceMessage&) = delete;
    ~WebServiceMessage();

    std::int8_t SetRequestUri(const char* uri);
    std::int8_t SetIdempotent(int flag);
    /// Puts the request into the message and answers the one held before.
    Serializable* SetRequestMsg(Serializable* request);
    /// Puts the response into the message and answers the one held before.
    Serializable* SetResponseMsg(Serializable* response);
    Serializable* GetRequestMsg() const { return request_; }
    Serializable* GetResponseMsg() const { return response_; }
    Headers::RequestHeader& GetRequestHeader() { return header_; }
    /// The context of the call; nothing in it is read by the module.
    Headers::SecurityContext& GetContext() { return context_; }

  private:
    Headers::RequestHeader header_;
    Headers::SecurityContext context_;
    char* requestUri_ = nullptr;
    int idempotent_ = 0;
    Serializable* request_ = nullptr;
    Serializable* response_ = nullptr;
};

}  // namespace KRX::Messaging
