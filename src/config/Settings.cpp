#include "config/Settings.h"

#include "platform/agent/Logging.h"

#include <algorithm>
#include <utility>

namespace config {
namespace {

constexpr TagNames kTags;

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
    using Tags = TagNames;
    static const std::array<SettingRow, kSettingCount> rows{{
        {Setting::LogFilePath, Tags::FileLogging, Tags::LogFilePath, Kind::text, &Settings::logFilePath},
        {Setting::FileSize, Tags::FileLogging, Tags::FileSize, Kind::text, &Settings::fileSize},
        {Setting::LogRevisionDays, Tags::FileLogging, Tags::LogRevisionDays, Kind::text,
         &Settings::logRevisionDays},
        {Setting::LogLevel, Tags::FileLogging, Tags::LogLevel, Kind::level, &Settings::logLevel},
        {Setting::FileLogger, Tags::FileLogging, Tags::FileLogger, Kind::on, &Settings::fileLogger},
        {Setting::TunnelOpen, Tags::TunnelMessags, Tags::OpenMessage, Kind::messages,
         &Settings::tunnelOpenMessages},
        {Setting::TunnelClose, Tags::TunnelMessags, Tags::CloseMessage, Kind::messages,
         &Settings::tunnelCloseMessages},
        {Setting::Abort, Tags::TunnelMessags, Tags::AbortMessage, Kind::text, &Settings::abortMessage},
        {Setting::FileOpen, Tags::FileMessages, Tags::OpenMessage, Kind::messages,
         &Settings::fileOpenMessages},
        {Setting::FileClose, Tags::FileMessages, Tags::CloseMessage, Kind::messages,
         &Settings::fileCloseMessages},
        {Setting::RDListner, Tags::ListnerSet, Tags::RDListner, Kind::flag, &Settings::rdListner},
        {Setting::TunnelListner, Tags::ListnerSet, Tags::TunnelListner, Kind::flag, &Settings::tunnelListner},
        {Setting::FileListner, Tags::ListnerSet, Tags::FileListner, Kind::flag, &Settings::fileListner},
        {Setting::Script, std::nullopt, Tags::Script, Kind::text, &Settings::script},
        {Setting::ResumeStatusFile, std::nullopt, Tags::RSMResumeStatusFile, Kind::text,
         &Settings::resumeStatusFile},
    }};
    return rows;
}

std::span<const std::string> textsOf(const MessageList& list) {
    return std::span(list).first(list.empty() ? 0 : list.size() - 1);
}

std::vector<Reading> readingsIn(const Element& child) {
    std::vector<Reading> readings;
    if (child.fromEntity) {
        return readings;
    }
    for (const SettingRow& row : settingRows()) {
        if (child.name != kTags[row.section.value_or(row.tag)]) {
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
    if (row.kind == Kind::flag) {
        settings.*std::get<bool Settings::*>(row.member) = !text.empty();
        return true;
    }
    if (text.empty()) {
        return false;
    }
    if (row.kind == Kind::on) {
        settings.*std::get<bool Settings::*>(row.member) = true;
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
    const auto all = levels();
    const auto found =
        std::find_if(all.begin(), all.end(), [&](const NamedLevel& one) { return one.name == name; });
    return found == all.end() ? level::kInfo : found->number;
}

}  // namespace config
