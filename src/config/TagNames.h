#pragma once

#include <array>
#include <cstddef>

#include <xercesc/util/XercesDefs.hpp>

/// The element names of the configuration file in the XML toolkit's 16-bit form; no toolkit needs to run.
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

    const XMLCh* operator[](Tag tag) const noexcept { return kNames[tag]; }

  private:
    static constexpr std::array<const XMLCh*, Count> kNames{
        u"Message",       u"LogFilePath",  u"FileSize",           u"LogRevisionDays", u"LogLevel",
        u"FileLogger",    u"FileLogging",  u"OpenMessage",        u"CloseMessage",    u"AbortMessage",
        u"TunnelMessags", u"ListnerSet",   u"RDListner",          u"TunnelListner",   u"FileListner",
        u"Script",        u"FileMessages", u"RSMResumeStatusFile"};
};
