#include "platform/agent/Registration.h"

#include <atomic>
#include <memory>

namespace KRX::Services::RegistrationNS {

struct Asset::Implementation {
    Messaging::SerializableArray properties;
    char* memberName = nullptr;
    char* memberPassword = nullptr;
    std::atomic<unsigned int> currentPollInterval = 0;
};

Asset::Asset(const char* elementName)
    : Serializable(elementName, nullptr, 0, 1), record_(std::make_unique<Implementation>().release()) {}

Asset::~Asset() {
    ClearProperties();
    delete[] record_->memberName;
    delete[] record_->memberPassword;
    delete record_;
}

void Asset::CopyFrom(const Asset& other) {
    if (this == &other) {
        return;
    }
    SetMemberName(other.GetMemberName());
    SetMemberPassword(other.GetMemberPassword());
    SetCurrentPollInterval(other.GetCurrentPollInterval());
    ClearProperties();
    const Messaging::SerializableArray& source = *other.GetProperties();
    for (int i = 0; i < source.GetCount(); ++i) {
        const auto& property = *static_cast<const Property*>(source.GetEntry(i));
        auto copy = std::make_unique<Property>(property.GetAction(), property.GetName(), property.GetValue(),
                                               property.GetElementName());
        if (record_->properties.AddEntry(copy.get()) == 0) {
            static_cast<void>(copy.release());  // The record releases it.
        }
    }
}

void Asset::ClearProperties() {
    Messaging::SerializableArray& properties = record_->properties;
    while (properties.GetCount() > 0) {
        auto* last = static_cast<Property*>(properties.GetEntry(properties.GetCount() - 1));
        properties.RemoveEntry(last);
        delete last;
    }
}

Messaging::SerializableArray* Asset::GetProperties() {
    return &record_->properties;
}
const Messaging::SerializableArray* Asset::GetProperties() const {
    return &record_->properties;
}
const char* Asset::GetMemberName() const {
    return record_->memberName;
}
const char* Asset::GetMemberPassword() const {
    return record_->memberPassword;
}
unsigned int Asset::GetCurrentPollInterval() const {
    return record_->currentPollInterval;
}
void Asset::SetMemberName(const char* name) {
    delanddup(record_->memberName, name);
}
void Asset::SetMemberPassword(const char* password) {
    delanddup(record_->memberPassword, password);
}
void Asset::SetCurrentPollInterval(unsigned int seconds) {
    record_->currentPollInterval = seconds;
}

Property::Property(const char* action, const char* name, const char* value, const char* elementName)
    : Serializable(elementName, nullptr, 0, 1) {
    delanddup(action_, action);
    delanddup(name_, name);
    delanddup(value_, value);
}

Property::~Property() {
    delete[] action_;
    delete[] name_;
    delete[] value_;
}

void Property::SetValue(const char* value) {
    delanddup(value_, value);
}
const char* Property::GetAction() const {
    return action_;
}
const char* Property::GetName() const {
    return name_;
}
const char* Property::GetValue() const {
    return value_;
}

}  // namespace KRX::Services::RegistrationNS
