#pragma once

#include "EntryReader.h"
#include "platform/File.h"

#include <cstdint>
#include <string>

namespace logreader {

/// A log file or an archive, open and being read.
class OpenLog final {
  public:
    /// Throws std::runtime_error when it cannot be opened, and while it is read when it cannot be read.
    explicit OpenLog(const std::string& path);
    /// Takes a file that is open.
    OpenLog(const std::string& path, platform::File file);
    OpenLog(const OpenLog&) = delete;
    OpenLog& operator=(const OpenLog&) = delete;

    EntryReader& entries() { return entries_; }
    const std::string& path() const { return path_; }
    const platform::File& file() const { return file_; }
    std::uint64_t bytesRead() const { return bytesRead_; }

  private:
    std::string path_;
    platform::File file_;
    std::uint64_t bytesRead_ = 0;
    EntryReader entries_;
};

}  // namespace logreader
