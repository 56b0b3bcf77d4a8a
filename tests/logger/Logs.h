// Configurations and scenarios of the file logger for tests, and what it left.
#pragma once

#include "support/Workspace.h"

#include <filesystem>
#include <regex>
#include <set>
#include <string>

namespace logs {

/// The file logger on, at level "trace", into log/k.xml; `more` follows and wins.
inline std::string configuration(const std::string& more = {}) {
    return "<z><FileLogging><LogLevel>trace</LogLevel><LogFilePath>log/k.xml</LogFilePath></FileLogging>"
           "<ListnerSet><FileListner>1</FileListner></ListnerSet>" +
           more + "</z>";
}

inline std::string setting(const std::string& name, const std::string& value) {
    return "<FileLogging><" + name + ">" + value + "</" + name + "></FileLogging>";
}

/// A log text with each entry's date and time, where they have their form, as "|".
inline std::string withoutStamps(const std::string& text) {
    static const std::regex stamp(R"(Date:\d{4}-\d\d?-\d\d? Time:\d\d?:\d\d?:\d\d? :: )");
    return std::regex_replace(text, stamp, "|");
}

/// The log files and archives below the workspace, as "NAME TEXT; ..." with line ends, of
/// either kind, as "/".
inline std::string files(const support::Workspace& workspace) {
    const std::filesystem::path root = workspace.path("");
    std::set<std::string> texts;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
        const std::string name = entry.path().lexically_relative(root).generic_string();
        if (entry.is_regular_file() && name.find("test.") != 0 && name != "config") {
            texts.insert(name + " " + withoutStamps(workspace.read(name)));
        }
    }
    std::string all;
    for (const std::string& text : texts) {
        all += (all.empty() ? "" : "; ") + text;
    }
    return std::regex_replace(all, std::regex("\r?\n"), "/");
}

}  // namespace logs
