// Which elements of a document the module takes, by the rules of its reader.
#pragma once

#include "Document.h"
#include "KnownElements.h"

#include <array>
#include <unordered_map>
#include <vector>

namespace check {

enum class Setting : std::uint8_t {
    LogFilePath,
    FileSize,
    LogRevisionDays,
    LogLevel,
    FileLogger,
    TunnelOpen,
    TunnelClose,
    Abort,
    FileOpen,
    FileClose,
    RDListner,
    TunnelListner,
    FileListner,
    Script,
    ResumeStatusFile
};
constexpr std::size_t kSettingCount = 15;

struct SettingPlace {
    Setting setting;
    std::optional<Tag> section;  ///< child of the root; none when the setting is one itself
    Tag element;
};
/// One for each setting, in the order of the enumeration.
const std::array<SettingPlace, kSettingCount>& settingPlaces();

/// An element that the module looks at.
struct Reading {
    Setting setting;
    const Element* element;
};

struct Selection {
    std::vector<Reading> readings;                        ///< in the module's order
    std::array<const Element*, kSettingCount> inForce{};  ///< null: the default
    std::unordered_map<const Element*, Tag> looked;       ///< all elements that are looked at, sections too

    const Element* operator[](Setting setting) const { return inForce[static_cast<std::size_t>(setting)]; }
};

Selection select(const Document& document, const KnownElements& known);

/// The text of an element as the module takes it.
std::string textOf(const Element& element);
/// The "Message" children that the module takes into a list, empty ones included.
std::vector<const Element*> messagesOf(const Element& list, const KnownElements& known);

}  // namespace check
