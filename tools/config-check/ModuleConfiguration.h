// The module's own reading of a configuration: nothing else in this program knows the module's classes.
#pragma once

#include "config/TagNames.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace check {

using Tag = TagNames::Tag;
constexpr std::size_t kTagCount = TagNames::Count;

/// The settings as the module holds them after it has read a file.
struct ModuleSettings {
    std::string logFilePath;
    std::string fileSize;
    std::string logRevisionDays;
    std::int32_t logLevel = 0;
    bool fileLogger = false;
    std::vector<std::string> tunnelOpenMessages;
    std::vector<std::string> tunnelCloseMessages;
    std::vector<std::string> fileOpenMessages;
    std::vector<std::string> fileCloseMessages;
    std::string abortMessage;
    std::string script;
    std::string resumeStatusFile;
    bool rdListner = false;
    bool tunnelListner = false;
    bool fileListner = false;
};

/// Reads a file as the module does. Nothing when the module refuses it. The XML toolkit must be running.
std::optional<ModuleSettings> readAsModule(const std::string& path);

/// The element names that the module knows. The XML toolkit must be running.
std::array<std::string, kTagCount> elementNames();

/// A number as the module reads it from a text.
std::int32_t moduleNumber(std::string_view text);

}  // namespace check
