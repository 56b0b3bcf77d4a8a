#include "Selection.h"

#include "platform/Text.h"

namespace check {
namespace {

const Element* firstDescendant(const Element& element, const std::string& name) {
    for (const Element* child = element.firstChild; child != nullptr; child = child->next) {
        if (child->name == name) {
            return child;
        }
        if (const Element* const found = firstDescendant(*child, name)) {
            return found;
        }
    }
    return nullptr;
}

bool isList(Tag tag) {
    return tag == TagNames::OpenMessage || tag == TagNames::CloseMessage;
}

/// True when the module puts what it reads here in the place of what it read before.
bool takesEffect(const Element& element, Tag tag) {
    if (isList(tag)) {
        return element.first != Element::First::nothing;
    }
    return tag == TagNames::RDListner || tag == TagNames::TunnelListner || tag == TagNames::FileListner ||
           !textOf(element).empty();
}

}  // namespace

const std::array<SettingPlace, kSettingCount>& settingPlaces() {
    static const std::array<SettingPlace, kSettingCount> places{{
        {Setting::LogFilePath, TagNames::FileLogging, TagNames::LogFilePath},
        {Setting::FileSize, TagNames::FileLogging, TagNames::FileSize},
        {Setting::LogRevisionDays, TagNames::FileLogging, TagNames::LogRevisionDays},
        {Setting::LogLevel, TagNames::FileLogging, TagNames::LogLevel},
        {Setting::FileLogger, TagNames::FileLogging, TagNames::FileLogger},
        {Setting::TunnelOpen, TagNames::TunnelMessags, TagNames::OpenMessage},
        {Setting::TunnelClose, TagNames::TunnelMessags, TagNames::CloseMessage},
        {Setting::Abort, TagNames::TunnelMessags, TagNames::AbortMessage},
        {Setting::FileOpen, TagNames::FileMessages, TagNames::OpenMessage},
        {Setting::FileClose, TagNames::FileMessages, TagNames::CloseMessage},
        {Setting::RDListner, TagNames::ListnerSet, TagNames::RDListner},
        {Setting::TunnelListner, TagNames::ListnerSet, TagNames::TunnelListner},
        {Setting::FileListner, TagNames::ListnerSet, TagNames::FileListner},
        {Setting::Script, std::nullopt, TagNames::Script},
        {Setting::ResumeStatusFile, std::nullopt, TagNames::RSMResumeStatusFile},
    }};
    return places;
}

std::string textOf(const Element& element) {
    return std::string(platform::trimmed(element.text));
}

std::vector<const Element*> messagesOf(const Element& list, const KnownElements& known) {
    std::vector<const Element*> messages;
    for (const Element* child = list.firstChild; child != nullptr; child = child->next) {
        if (!child->fromEntity && child->name == known.name(TagNames::Message)) {
            messages.push_back(child);
        }
    }
    return messages;
}

Selection select(const Document& document, const KnownElements& known) {
    Selection selection;
    const auto read = [&](const Element& element, const SettingPlace& place) {
        selection.looked.emplace(&element, place.element);
        selection.readings.push_back({place.setting, &element});
        if (takesEffect(element, place.element)) {
            selection.inForce[static_cast<std::size_t>(place.setting)] = &element;
        }
        if (isList(place.element)) {
            for (const Element* const message : messagesOf(element, known)) {
                selection.looked.emplace(message, TagNames::Message);
            }
        }
    };
    const Element* const root = document.elements.empty() ? nullptr : &document.elements.front();
    for (const Element* child = root == nullptr ? nullptr : root->firstChild; child != nullptr;
         child = child->next) {
        for (const SettingPlace& place : settingPlaces()) {
            if (child->fromEntity || child->name != known.name(place.section.value_or(place.element))) {
                continue;
            }
            if (!place.section) {
                read(*child, place);
                continue;
            }
            selection.looked.emplace(child, *place.section);
            if (const Element* const found = firstDescendant(*child, known.name(place.element))) {
                read(*found, place);
            }
        }
    }
    return selection;
}

}  // namespace check
