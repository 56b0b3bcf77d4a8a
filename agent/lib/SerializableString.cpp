#include "platform/agent/Messaging.h"

namespace KRX::Messaging {

SerializableString::SerializableString(const char* elementName, const char* value)
    : Serializable(elementName, nullptr, 0, 1) {
    delanddup(value_, value);
}

SerializableString::~SerializableString() {
    delete[] value_;
}

std::int8_t SerializableString::SetElementText(const char* text) {
    return delanddup(value_, text);
}

const char* SerializableString::GetElementText(bool& release) {
    release = false;
    return value_;
}

bool SerializableString::HasElementText() {
    return true;
}

void SerializableString::SetValue(const char* value) {
    delanddup(value_, value);
}

const char* SerializableString::GetValue() const {
    return value_;
}

SerializableArray::SerializableArray() = default;

SerializableArray::~SerializableArray() = default;

}  // namespace KRX::Messaging
