#pragma once

#include <array>
#include <cstddef>
#include <string_view>

/// The element names of the configuration file.
class TagNames final {
  public:
    enum Tag : std::size_t {
        Message,
        LogFilePath,
        FileSize,
        LogRevisionDays,
        LogLevel,
        FileLogger,
        FileLogging,
        OpenMessage,
        CloseMessage,
        AbortMessage,
        TunnelMessags,
        ListnerSet,
        RDListner,
        TunnelListner,
        FileListner,
        Script,
        FileMessages,
        RSMResumeStatusFile,
        Count
    };

    constexpr std::string_view operator[](Tag tag) const noexcept { return kNames[tag]; }

  private:
    static constexpr std::array<std::string_view, Count> kNames{
        "Message",       "LogFilePath",  "FileSize",           "LogRevisionDays", "LogLevel",
        "FileLogger",    "FileLogging",  "OpenMessage",        "CloseMessage",    "AbortMessage",
        "TunnelMessags", "ListnerSet",   "RDListner",          "TunnelListner",   "FileListner",
        "Script",        "FileMessages", "RSMResumeStatusFile"};
};
