// Carries an element between its objects and its XML text.
#pragma once

#include "lib/XmlElement.h"
#include "platform/agent/Api.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace KRX::Messaging {

class Serializable;

/// Passed through `Serialize` and `Deserialize`, for one direction: it holds the received element that is
/// being read, or the text written so far.
class KRX_API Serializer final {
  public:
    /// For writing.
    Serializer() = default;
    /// For reading `received`, which must outlive the serializer.
    explicit Serializer(const agent::XmlElement& received) : received_(&received) {}
    Serializer(const Serializer&) = delete;
    Serializer& operator=(const Serializer&) = delete;

    /// The element that is being read; null when writing.
    const agent::XmlElement* received() const { return received_; }
    /// Lets `element` read `child`, a child of the element that is being read.
    std::int8_t readChild(const agent::XmlElement& child, Serializable& element);

    void openElement(std::string_view name);
    /// Only between `openElement` and the first content.
    void writeAttribute(std::string_view name, std::string_view text);
    void writeText(std::string_view text);
    void closeElement(std::string_view name);
    const std::string& written() const { return written_; }

    /// Keeps the first reason of a refusal; answers -1.
    std::int8_t fail(const std::string& reason);
    const std::string& failure() const { return failure_; }

  private:
    void endOpenTag();

    const agent::XmlElement* received_ = nullptr;
    std::string written_;
    bool tagIsOpen_ = false;
    std::string failure_;
};

}  // namespace KRX::Messaging

namespace agent {

/// Reads the XML text of a received message into its object. Throws std::runtime_error with the reason when
/// the text is malformed or the object refuses a part of it.
KRX_API void readMessage(std::string_view xml, KRX::Messaging::Serializable& message);
/// The XML text of a message object. Throws std::runtime_error when an element refuses to be written.
KRX_API std::string writeMessage(KRX::Messaging::Serializable& message);

}  // namespace agent
