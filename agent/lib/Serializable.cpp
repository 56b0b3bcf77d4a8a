#include "lib/Serializer.h"
#include "lib/XmlElement.h"
#include "platform/agent/Messaging.h"

#include <list>
#include <map>
#include <string>
#include <vector>

namespace KRX::Messaging {

/// How an element declared one of its sub-elements.
class SubElementDef final {
  public:
    std::string name;
    /// Whether the content is `element`, which is null when there is none; otherwise a simple text.
    bool isObject = false;
    Serializable* element = nullptr;  ///< not owned
    int maximum = 1;  ///< how often it may stand in the element; 0 or less: any number of times
};

namespace {

std::string orEmpty(const char* text) {
    return text == nullptr ? "" : text;
}

/// A text that an element answered; released when the element gave it away.
class AnsweredText final {
  public:
    template <typename Question>
    explicit AnsweredText(Question question) {
        text_ = question(release_);
    }
    AnsweredText(const AnsweredText&) = delete;
    AnsweredText& operator=(const AnsweredText&) = delete;
    ~AnsweredText() {
        if (release_) {
            delete[] text_;
        }
    }
    const char* get() const { return text_; }

  private:
    bool release_ = false;
    const char* text_ = nullptr;
};

/// Names an element and its fault.
std::string about(const std::string& element, const std::string& fault) {
    return "element '" + element + "' " + fault;
}

}  // namespace

/// The names; derived classes hold the texts.
struct Serializable::Implementation {
    std::string name;
    std::vector<std::string> attributes;
    std::list<SubElementDef> subElements;  ///< a list, so that answered descriptions stay where they are
};

Serializable::Serializable(const char* elementName, const char* /*text*/, int /*required*/, int /*flag*/)
    : implementation_(new Implementation{orEmpty(elementName), {}, {}}) {}

Serializable::~Serializable() {
    delete implementation_;
}

std::int8_t Serializable::Serialize(Serializer& serializer, unsigned int flags) {
    const std::string name = GetElementName();
    serializer.openElement(name);
    for (const std::string& attribute : implementation_->attributes) {
        const AnsweredText text([&](bool& release) { return GetAttributeText(attribute.c_str(), release); });
        if (text.get() != nullptr) {
            serializer.writeAttribute(attribute, text.get());
        }
    }
    if (HasElementText()) {
        const AnsweredText text([&](bool& release) { return GetElementText(release); });
        if (text.get() != nullptr) {
            serializer.writeText(text.get());
        }
    }
    for (const SubElementDef& subElement : implementation_->subElements) {
        if (subElement.isObject) {
            if (subElement.element != nullptr && subElement.element->Serialize(serializer, flags) != 0) {
                return serializer.fail(about(name, "cannot write '" + subElement.name + "'"));
            }
            continue;
        }
        for (int i = 0; i < subElement.maximum || subElement.maximum <= 0; ++i) {
            const AnsweredText text([&](bool& release) {
                return GetSubElementText(subElement.name.c_str(), release, static_cast<unsigned int>(i));
            });
            if (text.get() == nullptr) {
                break;
            }
            serializer.openElement(subElement.name);
            serializer.writeText(text.get());
            serializer.closeElement(subElement.name);
        }
    }
    serializer.closeElement(name);
    return 0;
}

std::int8_t Serializable::Deserialize(Serializer& serializer) {
    const std::string name = GetElementName();
    if (serializer.received() == nullptr) {
        return serializer.fail("nothing was received");
    }
    const agent::XmlElement& received = *serializer.received();
    if (received.name != name) {
        return serializer.fail("expected element '" + name + "', received '" + received.name + "'");
    }
    if (PreDeserialize() != 0) {
        return serializer.fail(about(name, "cannot be read"));
    }
    for (const auto& [attribute, text] : received.attributes) {
        if (SetAttributeText(attribute.c_str(), text.c_str()) != 0) {
            return serializer.fail(about(name, "refused attribute '" + attribute + "'"));
        }
    }
    if (HasElementText()) {
        if (SetElementText(received.text.c_str()) != 0) {
            return serializer.fail(about(name, "refused its text"));
        }
    } else if (received.text.find_first_not_of(" \t\r\n") != std::string::npos) {
        return serializer.fail(about(name, "takes no text of its own"));
    }
    std::map<const SubElementDef*, int> counts;
    for (const agent::XmlElement& child : received.children) {
        SubElementDef* subElement = nullptr;
        if (GetSubElement(child.name.c_str(), subElement) != 0 || subElement == nullptr) {
            return serializer.fail(about(name, "has no sub-element '" + child.name + "'"));
        }
        if (++counts[subElement] > subElement->maximum && subElement->maximum > 0) {
            return serializer.fail(
                about(name, "has more sub-elements '" + child.name + "' than it may have"));
        }
        if (subElement->isObject) {
            if (serializer.readChild(child, *subElement->element) != 0) {
                return serializer.fail(about(name, "refused sub-element '" + child.name + "'"));
            }
        } else if (!child.children.empty()) {
            return serializer.fail(about(child.name, "takes nothing but text"));
        } else if (SetSubElementText(child.name.c_str(), child.text.c_str()) != 0) {
            return serializer.fail(about(name, "refused sub-element '" + child.name + "'"));
        }
    }
    return 0;
}

std::int8_t Serializable::GetSubElement(const char* name, SubElementDef*& subElement) {
    // An element object stands in the message under its own name, not under the one it was declared with.
    for (SubElementDef& each : implementation_->subElements) {
        const bool isMeant = each.isObject
                                 ? each.element != nullptr && orEmpty(name) == each.element->GetElementName()
                                 : each.name == orEmpty(name);
        if (isMeant) {
            subElement = &each;
            return 0;
        }
    }
    subElement = nullptr;
    return -1;
}

std::int8_t Serializable::SetAttributeText(const char* /*name*/, const char* /*text*/) {
    return -1;
}

std::int8_t Serializable::SetElementText(const char* /*text*/) {
    return 0;
}

std::int8_t Serializable::SetSubElementText(const char* /*name*/, const char* /*text*/) {
    return -1;
}

const char* Serializable::GetAttributeText(const char* /*name*/, bool& release) {
    release = false;
    return nullptr;
}

const char* Serializable::GetElementText(bool& release) {
    release = false;
    return nullptr;
}

const char* Serializable::GetSubElementText(const char* /*name*/, bool& release, unsigned int /*index*/) {
    release = false;
    return nullptr;
}

std::int8_t Serializable::PreDeserialize() {
    return 0;
}

bool Serializable::HasElementText() {
    return implementation_->subElements.empty();
}

std::int8_t Serializable::RegisterAttribute(const char* name, int /*flag*/, const char* /*text*/) {
    implementation_->attributes.push_back(orEmpty(name));
    return 0;
}

std::int8_t Serializable::RegisterSubElement(const char* name, int /*minimum*/, int maximum,
                                             const char* /*text*/) {
    implementation_->subElements.push_back({orEmpty(name), false, nullptr, maximum});
    return 0;
}

std::int8_t Serializable::RegisterSubElement(const char* name, Serializable* element, int flag,
                                             const char* /*text*/) {
    implementation_->subElements.push_back({orEmpty(name), true, element, flag});
    return 0;
}

void Serializable::SetElementName(const char* name) {
    implementation_->name = orEmpty(name);
}

const char* Serializable::GetElementName() const {
    return implementation_->name.c_str();
}

}  // namespace KRX::Messaging
