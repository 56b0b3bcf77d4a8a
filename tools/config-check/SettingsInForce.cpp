#include "SettingsInForce.h"

#include "Paths.h"
#include "platform/Number.h"

namespace check {
namespace {

std::string meaningOf(const Inspection& in, const config::SettingRow& row, const std::string& value) {
    const auto number = [&](const char* unit) {
        const std::string read = std::to_string(platform::readNumber(value));
        return value == read ? unit : "read as " + read + " " + unit;
    };
    switch (row.setting) {
        case Setting::FileSize:
            return number("bytes");
        case Setting::LogRevisionDays:
            return number("days");
        case Setting::LogLevel:
            return writtenAtLevel(in.settings.logLevel);
        case Setting::LogFilePath:
        case Setting::ResumeStatusFile:
            if (value.empty()) {
                return row.setting == Setting::ResumeStatusFile
                           ? "RSM does not survive a restart of the agent"
                           : "";
            }
            return isRelative(value) ? "from here " + fromHere(value).string() : "";
        default:
            return {};
    }
}

/// A value that is no list, as a text.
struct AsText {
    const config::Settings& settings;

    std::string operator()(std::string config::Settings::*text) const { return settings.*text; }
    std::string operator()(bool config::Settings::*flag) const { return settings.*flag ? "on" : "off"; }
    std::string operator()(std::int32_t config::Settings::*number) const {
        const std::string_view name = nameOfLevel(settings.*number);
        return name.empty() ? std::to_string(settings.*number) : std::string(name);
    }
    std::string operator()(config::MessageList config::Settings::*) const { return {}; }
};

}  // namespace

std::vector<SettingInForce> settingsInForce(const Inspection& in) {
    std::vector<SettingInForce> all;
    for (const config::SettingRow& row : config::settingRows()) {
        SettingInForce one;
        one.name = (row.section ? std::string(kTags[*row.section]) + "/" : "").append(kTags[row.tag]);
        const Element* const origin = in.selection[row.setting];
        one.list = row.kind == config::Kind::messages;
        if (!one.list) {
            const std::string value = std::visit(AsText{in.settings}, row.member);
            one.values.push_back({value, origin == nullptr ? std::nullopt : std::optional(origin->place)});
            one.meaning = meaningOf(in, row, value);
        } else if (origin != nullptr) {
            for (const Element* const message : config::messagesOf(*origin)) {
                if (std::string text = message->trimmedText(); !text.empty()) {
                    one.values.push_back({std::move(text), message->place});
                }
            }
        }
        all.push_back(std::move(one));
    }
    return all;
}

}  // namespace check
