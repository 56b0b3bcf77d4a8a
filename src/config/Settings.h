// What the module takes from a configuration file. The one table of it: the module, the checker, the status and the
// page of a session all ask here. Nothing here needs the agent.
#pragma once

#include "config/Document.h"
#include "config/TagNames.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace config {

/// Texts with an empty one at their end; without even that when there was no list.
using MessageList = std::vector<std::string>;

/// The texts of a list, the end left out.
std::span<const std::string> textsOf(const MessageList& list);

struct Settings {
    std::string logFilePath = "..\\log\\kelp-logs.xml";
    std::string fileSize = "5000000";
    std::string logRevisionDays = "30";
    std::int32_t logLevel = 80;  ///< no level of a message: nothing but force passes it
    bool fileLogger = true;
    MessageList tunnelOpenMessages;
    MessageList tunnelCloseMessages;
    std::string abortMessage;
    MessageList fileOpenMessages;
    MessageList fileCloseMessages;
    bool rdListner = false;
    bool tunnelListner = false;
    bool fileListner = false;
    std::string script;
    std::string resumeStatusFile;
};

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

/// How an element becomes a setting.
enum class Kind : std::uint8_t {
    text,     ///< unless its text is empty
    level,    ///< the same, by the level's name
    on,       ///< switched on by any text
    flag,     ///< on by any text, off by an empty one
    messages  ///< the texts of its "Message" children, unless it has no child node at all
};

struct SettingRow {
    Setting setting;
    std::optional<TagNames::Tag> section;  ///< child of the root, whose first descendant of that name counts
    TagNames::Tag tag;                     ///< itself a child of the root when there is no section
    Kind kind;
    std::variant<std::string Settings::*, std::int32_t Settings::*, bool Settings::*, MessageList Settings::*>
        member;
};

/// One row a setting, in the order of the enumeration, which is also that of reading.
const std::array<SettingRow, kSettingCount>& settingRows();

/// An element that gives a setting or, where its text is empty, may leave it unchanged.
struct Reading {
    const SettingRow* row;
    const Element* element;
};

/// The elements that are looked at in a child of the root, in their order.
std::vector<Reading> readingsIn(const Element& child);
/// The "Message" children that count for a list, empty ones included.
std::vector<const Element*> messagesOf(const Element& list);
/// True when the setting was taken from the element. Throws only when memory runs out; a list is then absent.
bool apply(const Reading& reading, Settings& settings);

/// The settings of a document, and the elements that they come from.
struct TakenSettings {
    Settings settings;
    std::vector<Reading> readings;                        ///< all that were looked at, in their order
    std::array<const Element*, kSettingCount> origins{};  ///< null: the default

    const Element* originOf(Setting setting) const { return origins[static_cast<std::size_t>(setting)]; }
};

/// Of a document that is not refused, which must outlive them.
TakenSettings takeSettings(const Document& document);

struct NamedLevel {
    std::string_view name;
    std::int32_t number;
};
std::span<const NamedLevel> levels();
/// The number of the level of that name, that of "info" for any other text.
std::int32_t levelNamed(std::string_view name);

}  // namespace config
