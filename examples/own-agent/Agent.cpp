// The smallest agent that the module can live in: each operation of the interface that the module uses, and
// no more. A second of its threads' sleep takes a millisecond.
#include "Agent.h"

#include "platform/agent/Logging.h"
#include "platform/agent/Registration.h"
#include "platform/agent/ServiceAgent.h"
#include "platform/agent/Threads.h"

#include <chrono>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <thread>
#include <utility>

namespace {

std::atomic<KRXLogHook> logHook;

struct RunningThread {
    std::thread thread;
    std::shared_ptr<std::atomic<bool>> active;  // a thread may outlive its object
};

}  // namespace

std::atomic<int> device::polls;
std::atomic<int> device::reports;

void KRXLog(int level, const char* format, ...) {
    char text[2000];
    std::va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    if (const KRXLogHook hook = logHook) {
        hook(static_cast<std::uint8_t>(level), text);
    }
}
void KRXLogSetFunc(KRXLogHook hook) { logHook = hook; }
void KRXLogSetAuditFunc(KRXLogAuditHook /*hook*/) {}

KRXThreadHandle KRXThreadGetHandleSelf() { return nullptr; }
int KRXThreadGetPriority(KRXThreadHandle /*thread*/) { return 0; }
std::int8_t KRXThreadConstruct(KRXThread* thread) {
    thread->state = nullptr;
    return 0;
}
std::int8_t KRXThreadStart(KRXThread* thread, const char* /*name*/, int /*priority*/, int /*flags*/,
                           unsigned int /*stackSize*/, KRXThreadEntry entry, void* argument) {
    const auto active = std::make_shared<std::atomic<bool>>(true);
    thread->state = new RunningThread{std::thread([=] {
                                          entry(argument);
                                          *active = false;
                                      }),
                                      active};
    return 0;
}
int KRXThreadIsActive(KRXThread* thread) {
    return thread->state != nullptr && *static_cast<RunningThread*>(thread->state)->active ? 1 : 0;
}
std::int8_t KRXWaitForThread(KRXThread* thread, int* /*result*/, unsigned int milliseconds) {
    for (unsigned int waited = 0; KRXThreadIsActive(thread) != 0 && waited < milliseconds; ++waited) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return KRXThreadIsActive(thread) != 0 ? -1 : 0;
}
// One that still runs goes on by itself: it is a stop that gave up waiting for it.
void KRXThreadDestroy(KRXThread* thread) {
    auto* const running = static_cast<RunningThread*>(thread->state);
    if (running != nullptr) {
        running->thread.detach();
    }
    delete running;
}
void KRXThreadSleep(unsigned int milliseconds) {
    std::this_thread::sleep_for(std::chrono::microseconds(milliseconds));
}

std::int8_t delanddup(char*& target, const char* text) {
    char* const copy = text == nullptr ? nullptr : std::strcpy(new char[std::strlen(text) + 1], text);
    delete[] target;
    target = copy;
    return 0;
}

namespace KRX::Utils {

VoidArray::~VoidArray() { delete[] entries_; }
std::int8_t VoidArray::AddEntry(void* entry) {
    if (entries_ == nullptr) {
        entries_ = new void*[capacity_ = 20];  // the module reports eight properties
    }
    entries_[count_++] = entry;
    return 0;
}
std::int8_t VoidArray::RemoveEntry(void* entry) {
    for (int i = 0; i < count_; ++i) {
        if (entries_[i] == entry) {
            entries_[i] = entries_[--count_];
            return 0;
        }
    }
    return -1;
}

}  // namespace KRX::Utils

namespace KRX::Messaging {

struct Serializable::Implementation {
    std::string name;
};
Serializable::Serializable(const char* elementName, const char* /*text*/, int /*required*/, int /*flag*/)
    : implementation_(new Implementation{elementName}) {}
Serializable::~Serializable() { delete implementation_; }
std::int8_t Serializable::Serialize(Serializer& /*serializer*/, unsigned int /*flags*/) { return -1; }
std::int8_t Serializable::Deserialize(Serializer& /*serializer*/) { return -1; }
std::int8_t Serializable::GetSubElement(const char* /*name*/, SubElementDef*& /*subElement*/) { return -1; }
std::int8_t Serializable::SetAttributeText(const char* /*name*/, const char* /*text*/) { return -1; }
std::int8_t Serializable::SetElementText(const char* /*text*/) { return -1; }
std::int8_t Serializable::SetSubElementText(const char* /*name*/, const char* /*text*/) { return -1; }
const char* Serializable::GetAttributeText(const char* /*name*/, bool& /*release*/) { return nullptr; }
const char* Serializable::GetElementText(bool& /*release*/) { return nullptr; }
const char* Serializable::GetSubElementText(const char* /*name*/, bool& /*release*/, unsigned int /*index*/) {
    return nullptr;
}
std::int8_t Serializable::PreDeserialize() { return 0; }
bool Serializable::HasElementText() { return false; }
std::int8_t Serializable::RegisterAttribute(const char* /*name*/, int /*flag*/, const char* /*text*/) {
    return 0;
}
std::int8_t Serializable::RegisterSubElement(const char* /*name*/, int /*minimum*/, int /*maximum*/,
                                             const char* /*text*/) {
    return 0;
}
std::int8_t Serializable::RegisterSubElement(const char* /*name*/, Serializable* /*element*/, int /*flag*/,
                                             const char* /*text*/) {
    return 0;
}
void Serializable::SetElementName(const char* name) { implementation_->name = name; }
const char* Serializable::GetElementName() const { return implementation_->name.c_str(); }

SerializableString::SerializableString(const char* elementName, const char* value)
    : Serializable(elementName, nullptr, 0, 1) {
    SetValue(value);
}
SerializableString::~SerializableString() { delete[] value_; }
std::int8_t SerializableString::SetElementText(const char* text) { return delanddup(value_, text); }
const char* SerializableString::GetElementText(bool& /*release*/) { return value_; }
bool SerializableString::HasElementText() { return true; }
void SerializableString::SetValue(const char* value) { delanddup(value_, value); }
const char* SerializableString::GetValue() const { return value_; }
SerializableArray::SerializableArray() = default;
SerializableArray::~SerializableArray() = default;

namespace Headers {

RequestHeader::RequestHeader() : Serializable("RequestHeader", nullptr, 0, 1) {}
RequestHeader::~RequestHeader() {
    delete[] serviceName_;
    delete[] operation_;
}
void RequestHeader::SetServiceName(const char* name) { delanddup(serviceName_, name); }
void RequestHeader::SetOperation(const char* operation) { delanddup(operation_, operation); }
const char* RequestHeader::GetOperation() const { return operation_; }
Credentials::Credentials(const char* elementName) : Serializable(elementName, nullptr, 0, 1) {}
Credentials::~Credentials() = default;
void Credentials::SetMemberId(const char* /*memberId*/) {}
void Credentials::SetPassword(const char* /*password*/) {}
SecurityContext::SecurityContext(const char* elementName) : Serializable(elementName, nullptr, 0, 1) {}
SecurityContext::~SecurityContext() = default;
std::int8_t SecurityContext::SetCredentials(const Credentials* /*credentials*/) { return 0; }

}  // namespace Headers

WebServiceMessage::WebServiceMessage() : context_("SecurityContext") {}
WebServiceMessage::~WebServiceMessage() {
    delete request_;
    delete response_;
}
std::int8_t WebServiceMessage::SetRequestUri(const char* /*uri*/) { return 0; }
std::int8_t WebServiceMessage::SetIdempotent(int /*flag*/) { return 0; }
Serializable* WebServiceMessage::SetRequestMsg(Serializable* request) {
    return std::exchange(request_, request);
}
Serializable* WebServiceMessage::SetResponseMsg(Serializable* response) {
    return std::exchange(response_, response);
}

}  // namespace KRX::Messaging

namespace KRX::Services::RegistrationNS {

struct Asset::Implementation {
    Messaging::SerializableArray properties;
};
Asset::Asset(const char* elementName)
    : Serializable(elementName, nullptr, 0, 1), record_(new Implementation) {}
Asset::~Asset() { delete record_; }
void Asset::CopyFrom(const Asset& /*other*/) {}
void Asset::ClearProperties() {}
Messaging::SerializableArray* Asset::GetProperties() { return &record_->properties; }
const char* Asset::GetMemberName() const { return "device-7"; }
const char* Asset::GetMemberPassword() const { return ""; }
unsigned int Asset::GetCurrentPollInterval() const { return 60; }
Property::Property(const char* /*action*/, const char* name, const char* value, const char* elementName)
    : Serializable(elementName, nullptr, 0, 1) {
    delanddup(name_, name);
    delanddup(value_, value);
}
Property::~Property() {
    delete[] name_;
    delete[] value_;
}
void Property::SetValue(const char* value) { delanddup(value_, value); }
RegistrationProxy::RegistrationProxy(const char* /*serviceName*/, const char* /*requestUri*/,
                                     const char* /*serviceNamespace*/) {}
RegistrationProxy::~RegistrationProxy() = default;
std::int8_t RegistrationProxy::UpdateAsset(Asset& asset, int /*flags*/) {
    // What the agent's own classes may see of each other.
    struct List : Messaging::SerializableArray {
        using SerializableArray::entries_;
    };
    struct Told : Property {
        using Property::name_;
        using Property::value_;
    };
    const Messaging::SerializableArray& list = *asset.GetProperties();
    for (int i = 0; i < list.GetCount(); ++i) {
        const auto& property = *static_cast<const Property*>((list.*&List::entries_)[i]);
        if (std::strcmp(property.*&Told::name_, "RSM_MODE") == 0) {
            std::printf("report after %d polls: %s\n", device::polls.load(), property.*&Told::value_);
        }
    }
    ++device::reports;
    return 0;
}
void RegistrationProxy::SetOCM(Messaging::OCM* /*channel*/) {}
std::int8_t RegistrationProxy::SetSecurityContext(Messaging::Headers::SecurityContext& /*context*/) {
    return 0;
}

}  // namespace KRX::Services::RegistrationNS

namespace KRX::ServiceAgentNS {

struct DeviceAsset final : VirtualAsset {
    Services::RegistrationNS::Asset record{"Asset"};
};
struct DeviceAgent final : ServiceAgent {
    DeviceAsset asset;
};
void VirtualAsset::ForcePoll() { ++device::polls; }
const Services::RegistrationNS::Asset& VirtualAsset::GetAssetProfile() const {
    return static_cast<const DeviceAsset*>(this)->record;
}
Messaging::OCM* VirtualAsset::GetOCM() { return nullptr; }
VirtualAsset* ServiceAgent::GetAsset(int /*index*/) { return &static_cast<DeviceAgent*>(this)->asset; }

}  // namespace KRX::ServiceAgentNS

KRX::ServiceAgentNS::ServiceAgent& device::serviceAgent() {
    static KRX::ServiceAgentNS::DeviceAgent agent;
    return agent;
}
