#include "Rules.h"
#include "platform/agent/Logging.h"
#include "platform/portable/Number.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace check {
namespace {

const char* writtenAtLevel(std::int32_t number) {
    static constexpr std::pair<std::int32_t, const char*> kWritten[] = {
        {level::kTrace, "every message"},
        {level::kInfo, "every message but those of level trace"},
        {level::kWarn, "messages of the levels warn, error and force, and no audit message"},
        {level::kError, "messages of the levels error and force, and no audit message"},
        {level::kAudit, "nothing at all"}};
    const auto* const found = std::find_if(std::begin(kWritten), std::end(kWritten),
                                           [&](const auto& one) { return one.first == number; });
    return found == std::end(kWritten) ? "messages of level force only" : found->second;
}

std::string meaningOf(const Inspection& in, Setting setting, const std::string& value) {
    switch (setting) {
        case Setting::FileSize:
        case Setting::LogRevisionDays: {
            const char* const unit = setting == Setting::FileSize ? "bytes" : "days";
            const std::string read = std::to_string(platform::readNumber(value));
            return value == read ? unit : joined("read as ", read, " ", unit);
        }
        case Setting::LogLevel:
            return writtenAtLevel(in.settings.logLevel);
        case Setting::ResumeStatusFile:
            if (value.empty()) {
                return "RSM does not survive a restart of the agent";
            }
            [[fallthrough]];
        case Setting::LogFilePath:
            return nativePath(value).is_relative() ? "from here " + fromHere(value).string() : "";
        default:
            return {};
    }
}

/// A value that is not a list, as a text.
std::string valueOf(const config::Settings& settings, const config::SettingRow& row) {
    if (const auto* const text = std::get_if<std::string config::Settings::*>(&row.member)) {
        return settings.*(*text);
    }
    if (row.kind == config::Kind::level) {
        const std::string_view name = nameOfLevel(settings.logLevel);
        return name.empty() ? std::to_string(settings.logLevel) : std::string(name);
    }
    return settings.*std::get<bool config::Settings::*>(row.member) ? "on" : "off";
}

}  // namespace

std::vector<SettingInForce> settingsInForce(const Inspection& in) {
    std::vector<SettingInForce> all;
    for (const config::SettingRow& row : config::settingRows()) {
        SettingInForce& one = all.emplace_back();
        one.name = joined(row.section ? kTags[*row.section] : "", row.section ? "/" : "", kTags[row.tag]);
        one.list = row.kind == config::Kind::messages;
        const Element* const origin = in.originOf(row.setting);
        if (!one.list) {
            const std::string value = valueOf(in.settings, row);
            one.values.push_back({value, origin == nullptr ? std::nullopt : std::optional(origin->place)});
            one.meaning = meaningOf(in, row.setting, value);
        } else if (origin != nullptr) {
            for (const Element* const message : config::messagesOf(*origin)) {
                if (std::string text = message->trimmedText(); !text.empty()) {
                    one.values.push_back({std::move(text), message->place});
                }
            }
        }
    }
    return all;
}

}  // namespace check
