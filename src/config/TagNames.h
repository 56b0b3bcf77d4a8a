#pragma once

#include <array>
#include <cstddef>

#include <xercesc/util/XercesDefs.hpp>

/// The element names of the configuration file in the XML toolkit's 16-bit form.
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

    /// The XML toolkit must be running. Throws the toolkit's exceptions when memory runs out.
    TagNames();
    TagNames(const TagNames&) = delete;
    TagNames& operator=(const TagNames&) = delete;
    ~TagNames();

    const XMLCh* operator[](Tag tag) const noexcept { return names_[tag]; }

  private:
    void release();

    std::array<XMLCh*, Count> names_{};
};
