#include "SettingsInForce.h"

#include "Paths.h"

namespace check {
namespace {

std::string onOff(bool on) {
    return on ? "on" : "off";
}

std::string pathMeaning(const std::string& path) {
    return !path.empty() && isRelative(path) ? "from here " + fromHere(path).string() : "";
}

std::string levelMeaning(std::int32_t number) {
    const Level* const level = levelNumbered(number);
    return level == nullptr ? "" : level->written;
}

std::string levelValue(std::int32_t number) {
    const Level* const level = levelNumbered(number);
    return level == nullptr || *level->name == '\0' ? std::to_string(number) : level->name;
}

std::string numberMeaning(const std::string& text, const char* unit) {
    const std::string number = std::to_string(moduleNumber(text));
    return text == number ? unit : "read as " + number + " " + unit;
}

std::optional<Position> originOf(const Inspection& in, const Element* element) {
    return element == nullptr ? std::nullopt : std::optional(in.source.startOfTag(element->end));
}

std::vector<Value> listOf(const Inspection& in, const Element* list, const std::vector<std::string>& texts) {
    std::vector<Value> values;
    std::size_t next = 0;
    for (const Element* const message :
         list == nullptr ? std::vector<const Element*>() : messagesOf(*list, in.known)) {
        if (next < texts.size() && !textOf(*message).empty()) {
            values.push_back({texts[next++], originOf(in, message)});
        }
    }
    return values;
}

}  // namespace

std::vector<SettingInForce> settingsInForce(const Inspection& in) {
    const ModuleSettings& settings = in.settings;
    std::vector<SettingInForce> all;
    for (const SettingPlace& place : settingPlaces()) {
        SettingInForce one;
        one.name = (place.section ? in.name(*place.section) + "/" : "") + in.name(place.element);
        const Element* const element = in.selection[place.setting];
        const auto single = [&](std::string value, std::string meaning = {}) {
            one.values.push_back({std::move(value), originOf(in, element)});
            one.meaning = std::move(meaning);
        };
        const auto list = [&](const std::vector<std::string>& values) {
            one.values = listOf(in, element, values);
            one.list = true;
        };
        switch (place.setting) {
            case Setting::LogFilePath:
                single(settings.logFilePath, pathMeaning(settings.logFilePath));
                break;
            case Setting::FileSize:
                single(settings.fileSize, numberMeaning(settings.fileSize, "bytes"));
                break;
            case Setting::LogRevisionDays:
                single(settings.logRevisionDays, numberMeaning(settings.logRevisionDays, "days"));
                break;
            case Setting::LogLevel:
                single(levelValue(settings.logLevel), levelMeaning(settings.logLevel));
                break;
            case Setting::FileLogger:
                single(onOff(settings.fileLogger));
                break;
            case Setting::TunnelOpen:
                list(settings.tunnelOpenMessages);
                break;
            case Setting::TunnelClose:
                list(settings.tunnelCloseMessages);
                break;
            case Setting::Abort:
                single(settings.abortMessage);
                break;
            case Setting::FileOpen:
                list(settings.fileOpenMessages);
                break;
            case Setting::FileClose:
                list(settings.fileCloseMessages);
                break;
            case Setting::RDListner:
                single(onOff(settings.rdListner));
                break;
            case Setting::TunnelListner:
                single(onOff(settings.tunnelListner));
                break;
            case Setting::FileListner:
                single(onOff(settings.fileListner));
                break;
            case Setting::Script:
                single(settings.script);
                break;
            case Setting::ResumeStatusFile:
                single(settings.resumeStatusFile, settings.resumeStatusFile.empty()
                                                      ? "RSM does not survive a restart of the agent"
                                                      : pathMeaning(settings.resumeStatusFile));
                break;
        }
        all.push_back(std::move(one));
    }
    return all;
}

}  // namespace check
