#pragma once

#include "EntryReader.h"
#include "LogBytes.h"
#include "platform/File.h"

#include <cstdint>
#include <memory>
#include <string>

namespace logreader {

/// A log file or an archive, open and being read.
class OpenLog final {
  public:
    /// Takes a file that is open, or opens it: then it throws std::runtime_error when it cannot be opened. It cannot be
    /// read: that is thrown while it is.
    explicit OpenLog(std::string path, std::shared_ptr<const platform::File> file = nullptr);
    OpenLog(const OpenLog&) = delete;
    OpenLog& operator=(const OpenLog&) = delete;

    EntryReader& entries() { return entries_; }
    const std::string& path() const { return path_; }
    const platform::File& file() const { return *file_; }
    std::uint64_t bytesRead() const { return bytes_.position(); }

  private:
    std::shared_ptr<const platform::File> file_;
    std::string path_;
    LogBytes bytes_{*file_};
    EntryReader entries_;
};

/// Opens an archive. Who compresses it just now takes away the name under which it was found: then the compressed one
/// is opened, and `path` is its name. Closed, with `errno`, when it cannot be opened.
platform::File openArchive(std::string& path);

}  // namespace logreader
