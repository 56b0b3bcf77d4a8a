#include "lib/Serializer.h"

#include "platform/agent/Messaging.h"

#include <stdexcept>
#include <utility>

namespace KRX::Messaging {

namespace {

/// Appends a text so that a reader gets it back; control characters that XML cannot carry become "?".
void appendEscaped(std::string& target, std::string_view text, bool inAttribute) {
    for (const char c : text) {
        const bool control = static_cast<unsigned char>(c) < 0x20;
        if (c == '&') {
            target += "&amp;";
        } else if (c == '<') {
            target += "&lt;";
        } else if (c == '>') {
            target += "&gt;";
        } else if (c == '"' && inAttribute) {
            target += "&quot;";
        } else if (c == '\r' || (inAttribute && (c == '\n' || c == '\t'))) {
            target += "&#" + std::to_string(int{c}) + ";";
        } else {
            target += control && c != '\n' && c != '\t' ? '?' : c;
        }
    }
}

}  // namespace

std::int8_t Serializer::readChild(const agent::XmlElement& child, Serializable& element) {
    const agent::XmlElement* parent = std::exchange(received_, &child);
    const std::int8_t result = element.Deserialize(*this);
    received_ = parent;
    return result;
}

void Serializer::openElement(std::string_view name) {
    endOpenTag();
    written_.append("<").append(name);
    tagIsOpen_ = true;
}

void Serializer::writeAttribute(std::string_view name, std::string_view text) {
    written_.append(" ").append(name).append("=\"");
    appendEscaped(written_, text, true);
    written_ += '"';
}

void Serializer::writeText(std::string_view text) {
    endOpenTag();
    appendEscaped(written_, text, false);
}

void Serializer::closeElement(std::string_view name) {
    if (std::exchange(tagIsOpen_, false)) {
        written_ += "/>";
    } else {
        written_.append("</").append(name).append(">");
    }
}

void Serializer::endOpenTag() {
    if (std::exchange(tagIsOpen_, false)) {
        written_ += '>';
    }
}

std::int8_t Serializer::fail(const std::string& reason) {
    if (failure_.empty()) {
        failure_ = reason;
    }
    return -1;
}

}  // namespace KRX::Messaging

namespace agent {

using KRX::Messaging::Serializer;

void readMessage(std::string_view xml, KRX::Messaging::Serializable& message) {
    const XmlElement root = parseXml(xml);
    Serializer serializer(root);
    if (message.Deserialize(serializer) != 0) {
        throw std::runtime_error(serializer.failure().empty() ? "element '" + root.name + "' was refused"
                                                              : serializer.failure());
    }
}

std::string writeMessage(KRX::Messaging::Serializable& message) {
    Serializer serializer;
    if (message.Serialize(serializer, 0) != 0) {
        throw std::runtime_error("element '" + std::string(message.GetElementName()) + "' cannot be written");
    }
    return serializer.written();
}

}  // namespace agent
