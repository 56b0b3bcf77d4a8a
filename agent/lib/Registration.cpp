#include "platform/agent/Registration.h"

#include "lib/Insides.h"

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
    delanddup(record_->memberName, other.GetMemberName());
    delanddup(record_->memberPassword, other.GetMemberPassword());
    record_->currentPollInterval = other.GetCurrentPollInterval();
    ClearProperties();
    const Messaging::SerializableArray& source = *other.GetProperties();
    for (int i = 0; i < source.GetCount(); ++i) {
        const auto& property = *static_cast<const Property*>(agent::entryOf(source, i));
        const auto [action, name, value] = agent::textsOf(property);
        auto copy = std::make_unique<Property>(action, name, value, property.GetElementName());
        if (record_->properties.AddEntry(copy.get()) == 0) {
            static_cast<void>(copy.release());  // The record releases it.
        }
    }
}

void Asset::ClearProperties() {
    Messaging::SerializableArray& properties = record_->properties;
    while (properties.GetCount() > 0) {
        auto* last = static_cast<Property*>(agent::entryOf(properties, properties.GetCount() - 1));
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

}  // namespace KRX::Services::RegistrationNS

namespace agent {

namespace {

// A derived class may name what it inherits, of other objects, too.
struct PropertyInside final : KRX::Services::RegistrationNS::Property {
    static constexpr auto action = &PropertyInside::action_;
    static constexpr auto name = &PropertyInside::name_;
    static constexpr auto value = &PropertyInside::value_;
};

}  // namespace

void DeviceRecord::setMember(const char* name, const char* password) {
    delanddup(record_->memberName, name);
    delanddup(record_->memberPassword, password);
}

void DeviceRecord::setPollInterval(unsigned int seconds) {
    record_->currentPollInterval = seconds;
}

PropertyTexts textsOf(const KRX::Services::RegistrationNS::Property& property) {
    return {property.*PropertyInside::action, property.*PropertyInside::name,
            property.*PropertyInside::value};
}

}  // namespace agent
