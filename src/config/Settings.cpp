#include "config/Settings.h"

#include "platform/agent/Logging.h"

#include <utility>

namespace config {
namespace {

constexpr TagNames kTags;

using T = TagNames;
constexpr std::array<SettingRow, kSettingCount> kRows{{
    {Setting::LogFilePath, T::FileLogging, T::LogFilePath, Kind::text, &Settings::logFilePath},
    {Setting::FileSize, T::FileLogging, T::FileSize, Kind::text, &Settings::fileSize},
    {Setting::LogRevisionDays, T::FileLogging, T::LogRevisionDays, Kind::text, &Settings::logRevisionDays},
    {Setting::LogLevel, T::FileLogging, T::LogLevel, Kind::level, &Settings::logLevel},
    {Setting::FileLogger, T::FileLogging, T::FileLogger, Kind::on, &Settings::fileLogger},
    {Setting::TunnelOpen, T::TunnelMessags, T::OpenMessage, Kind::messages, &Settings::tunnelOpenMessages},
    {Setting::TunnelClose, T::TunnelMessags, T::CloseMessage, Kind::messages, &Settings::tunnelCloseMessages},
    {Setting::Abort, T::TunnelMessags, T::AbortMessage, Kind::text, &Settings::abortMessage},
    {Setting::FileOpen, T::FileMessages, T::OpenMessage, Kind::messages, &Settings::fileOpenMessages},
    {Setting::FileClose, T::FileMessages, T::CloseMessage, Kind::messages, &Settings::fileCloseMessages},
    {Setting::RDListner, T::ListnerSet, T::RDListner, Kind::flag, &Settings::rdListner},
    {Setting::TunnelListner, T::ListnerSet, T::TunnelListner, Kind::flag, &Settings::tunnelListner},
    {Setting::FileListner, T::ListnerSet, T::FileListner, Kind::flag, &Settings::fileListner},
    {Setting::Script, std::nullopt, T::Script, Kind::text, &Settings::script},
    {Setting::ResumeStatusFile, std::nullopt, T::RSMResumeStatusFile, Kind::text,
     &Settings::resumeStatusFile},
}};

/// In document order. Nesting has its bound, so this cannot go deep.
const Element* firstDescendant(const Element& element, std::string_view name) {
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

bool applyList(const Element& element, MessageList& list) {
    if (element.first == Element::First::nothing) {
        return false;
    }
    list.clear();
    MessageList texts;
    for (const Element* const message : messagesOf(element)) {
        if (std::string text = message->trimmedText(); !text.empty()) {
            texts.push_back(std::move(text));
        }
    }
    texts.emplace_back();
    list = std::move(texts);
    return true;
}

}  // namespace

const std::array<SettingRow, kSettingCount>& settingRows() {
    return kRows;
}

std::span<const std::string> textsOf(const MessageList& list) {
    return std::span(list).first(list.empty() ? 0 : list.size() - 1);
}

std::vector<Reading> readingsIn(const Element& child) {
    std::vector<Reading> readings;
    for (const SettingRow& row : settingRows()) {
        if (child.fromEntity || child.name != kTags[row.section.value_or(row.tag)]) {
            continue;
        }
        if (const Element* const found = row.section ? firstDescendant(child, kTags[row.tag]) : &child) {
            readings.push_back({&row, found});
        }
    }
    return readings;
}

std::vector<const Element*> messagesOf(const Element& list) {
    std::vector<const Element*> messages;
    for (const Element* child = list.firstChild; child != nullptr; child = child->next) {
        if (!child->fromEntity && child->name == kTags[TagNames::Message]) {
            messages.push_back(child);
        }
    }
    return messages;
}

bool apply(const Reading& reading, Settings& settings) {
    const SettingRow& row = *reading.row;
    if (row.kind == Kind::messages) {
        return applyList(*reading.element, settings.*std::get<MessageList Settings::*>(row.member));
    }
    std::string text = reading.element->trimmedText();
    if (text.empty() && row.kind != Kind::flag) {
        return false;
    }
    if (const auto* const isOn = std::get_if<bool Settings::*>(&row.member)) {
        settings.*(*isOn) = !text.empty();
    } else if (row.kind == Kind::level) {
        settings.*std::get<std::int32_t Settings::*>(row.member) = levelNamed(text);
    } else {
        settings.*std::get<std::string Settings::*>(row.member) = std::move(text);
    }
    return true;
}

TakenSettings takeSettings(const Document& document) {
    TakenSettings taken;
    for (const Element* child = document.root()->firstChild; child != nullptr; child = child->next) {
        for (const Reading& reading : readingsIn(*child)) {
            taken.readings.push_back(reading);
            if (apply(reading, taken.settings)) {
                taken.origins[static_cast<std::size_t>(reading.row->setting)] = reading.element;
            }
        }
    }
    return taken;
}

std::span<const NamedLevel> levels() {
    static constexpr NamedLevel kLevels[] = {{"trace", level::kTrace}, {"info", level::kInfo},
                                             {"warn", level::kWarn},   {"error", level::kError},
                                             {"force", level::kForce}, {"audit", level::kAudit}};
    return kLevels;
}

std::int32_t levelNamed(std::string_view name) {
    for (const NamedLevel& one : levels()) {
        if (one.name == name) {
            return one.number;
        }
    }
    return level::kInfo;
}

}  // namespace config
